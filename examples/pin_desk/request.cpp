#include "request.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace
{

enum Field : unsigned int
{
    FIELD_OP = 0x01,
    FIELD_SESSION = 0x02,
    FIELD_CARD = 0x04,
    FIELD_SERIES = 0x08,
    FIELD_OWNER = 0x10,
    FIELD_PIN = 0x20,
    FIELD_NEW = 0x40,
    FIELD_BADGE = 0x80,
    FIELD_UNTIL = 0x100,
    FIELD_CLIENT = 0x200
};

struct Operation_Record
{
    Operation m_Operation;
    const wchar_t* m_pName;
    unsigned int m_nRequired;
    unsigned int m_nOptional;
};

constexpr Operation_Record OPERATIONS[] = {
    {Operation::store, L"store", FIELD_CARD | FIELD_OWNER | FIELD_PIN, FIELD_BADGE | FIELD_UNTIL},
    {Operation::issue, L"issue", FIELD_SERIES | FIELD_OWNER | FIELD_PIN, FIELD_BADGE | FIELD_UNTIL},
    {Operation::check, L"check", FIELD_CARD | FIELD_PIN, 0},
    {Operation::change, L"change", FIELD_CARD | FIELD_PIN | FIELD_NEW, 0},
    {Operation::unblock, L"unblock", FIELD_CARD, 0},
    {Operation::remove, L"remove", FIELD_CARD | FIELD_PIN, 0},
    {Operation::show, L"show", FIELD_CARD, 0},
    {Operation::list, L"list", 0, FIELD_OWNER},
    {Operation::leave, L"leave", 0, 0},
};

bool consists_Of(const Lib_String& strText, const wchar_t* pSet, unsigned long long nLeast,
                 unsigned long long nMost)
{
    return strText.Get_Length() >= nLeast && strText.Get_Length() <= nMost &&
           strText.Span_Including(pSet).Get_Length() == strText.Get_Length();
}

constexpr const wchar_t* DATE_DEMAND = L"a date, with a time or without, in the desk's locale";
constexpr const wchar_t* DIGITS = L"0123456789";
constexpr const wchar_t* LETTERS = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr const wchar_t* CARD_CHARACTERS = L"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-";

bool read_Operation(const Lib_String& strValue, Request& Result)
{
    for (const Operation_Record& Record : OPERATIONS)
    {
        if (strValue.CompareNoCase(Record.m_pName) == 0)
        {
            Result.m_Operation = Record.m_Operation;
            return true;
        }
    }
    return false;
}

bool read_Session(const Lib_String& strValue, Request& Result)
{
    Result.m_Session = static_cast<unsigned int>(Lib_String_To_Int(strValue));
    return consists_Of(strValue, DIGITS, 1, 6);
}

bool read_Client(const Lib_String& strValue, Request& Result)
{
    Result.m_nClient = static_cast<unsigned int>(Lib_String_To_Int(strValue));
    return consists_Of(strValue, DIGITS, 1, 6);
}

bool read_Card(const Lib_String& strValue, Request& Result)
{
    Result.m_strCard = strValue;
    return consists_Of(strValue, CARD_CHARACTERS, 1, 12);
}

bool read_Series(const Lib_String& strValue, Request& Result)
{
    Result.m_strSeries = strValue;
    return consists_Of(strValue, LETTERS, 1, 4);
}

/// What steers terminals, ends lines or turns the direction of writing: names are shown to others.
bool steers(wchar_t ch)
{
    return ch < 0x20 || (ch >= 0x7F && ch <= 0x9F) || ch == 0x200E || ch == 0x200F ||
           (ch >= 0x2028 && ch <= 0x202E) || (ch >= 0x2066 && ch <= 0x2069);
}

bool read_Owner(const Lib_String& strValue, Request& Result)
{
    Result.m_strOwner = strValue;
    const wchar_t* const pText = strValue;
    return !strValue.Is_Empty() && strValue.Get_Length() <= 60 &&
           std::none_of(pText, pText + strValue.Get_Length(), steers);
}

/// A PIN that cannot be enciphered comes back empty: without a cipher the desk must not go on.
bool keep_Pin(const Lib_String& strValue, Lib_Protected_String& Pin)
{
    if (!consists_Of(strValue, DIGITS, 4, 8))
        return false;
    Pin = strValue;
    if (Pin.Get_String().Is_Empty())
        throw std::runtime_error("PINs cannot be enciphered");
    return true;
}

bool read_Pin(const Lib_String& strValue, Request& Result) { return keep_Pin(strValue, Result.m_Pin); }

bool read_New_Pin(const Lib_String& strValue, Request& Result)
{
    return keep_Pin(strValue, Result.m_New_Pin);
}

/// Reading hex text reports nothing, so the text counts if writing the bytes gives it back.
bool read_Badge(const Lib_String& strValue, Request& Result)
{
    Lib_Read_Buffer(strValue, Result.m_Badge, L':');
    Lib_String strBack;
    Lib_Write_Buffer(Result.m_Badge.Get_Size(), Result.m_Badge.Get_Ptr(), strBack, L':');
    return Result.m_Badge.Get_Size() >= 4 && Result.m_Badge.Get_Size() <= 10 &&
           strBack.CompareNoCase(strValue) == 0;
}

bool read_Until(const Lib_String& strValue, Request& Result)
{
    Result.m_strUntil = strValue;
    return !strValue.Is_Empty();
}

struct Field_Record
{
    Field m_Field;
    const wchar_t* m_pName;
    const wchar_t* m_pDemand; ///< what a value must be
    bool (*m_pRead)(const Lib_String& strValue, Request& Result);
};

constexpr Field_Record FIELDS[] = {
    {FIELD_OP, L"op", L"an operation of the desk", read_Operation},
    {FIELD_SESSION, L"session", L"a number of up to 6 digits", read_Session},
    {FIELD_CLIENT, L"client", L"a number of up to 6 digits", read_Client},
    {FIELD_CARD, L"card", L"1 to 12 letters, digits or dashes", read_Card},
    {FIELD_SERIES, L"series", L"1 to 4 letters", read_Series},
    {FIELD_OWNER, L"owner", L"a name of up to 60 characters", read_Owner},
    {FIELD_PIN, L"pin", L"4 to 8 digits", read_Pin},
    {FIELD_NEW, L"new", L"4 to 8 digits", read_New_Pin},
    {FIELD_BADGE, L"badge", L"4 to 10 bytes such as 0a:1b:2c:3d", read_Badge},
    {FIELD_UNTIL, L"until", DATE_DEMAND, read_Until},
};

const Field_Record* find_Field(const Lib_String& strName)
{
    for (const Field_Record& Record : FIELDS)
    {
        if (strName.CompareNoCase(Record.m_pName) == 0)
            return &Record;
    }
    return nullptr;
}

/// Takes one pair into the request and notes its field in nSeen.
bool read_Pair(const Lib_String& strName, const Lib_String& strValue, Request& Result, unsigned int& nSeen,
               Lib_String& strFault)
{
    const Field_Record* pRecord = find_Field(strName);
    if (pRecord == nullptr)
    {
        strFault = L"there is a field that the desk doesn't know";
        return false;
    }
    if ((nSeen & pRecord->m_Field) != 0)
    {
        strFault.Format(L"%s is given twice", pRecord->m_pName);
        return false;
    }
    nSeen |= pRecord->m_Field;
    if (!pRecord->m_pRead(strValue, Result))
    {
        strFault.Format(L"%s is not %s", pRecord->m_pName, pRecord->m_pDemand);
        return false;
    }
    return true;
}

/// The name of the first field in a set.
const wchar_t* name_Field(unsigned int nFields)
{
    for (const Field_Record& Record : FIELDS)
    {
        if ((nFields & Record.m_Field) != 0)
            return Record.m_pName;
    }
    return L"";
}

/// Holds the fields that were seen against those that the operation takes.
bool check_Fields(Operation operation, unsigned int nSeen, Lib_String& strFault)
{
    if ((nSeen & FIELD_OP) == 0)
    {
        strFault = L"op is missing";
        return false;
    }
    const Operation_Record& Record = OPERATIONS[static_cast<int>(operation)];
    const unsigned int nMissing = Record.m_nRequired & ~nSeen;
    const unsigned int nTaken =
        Record.m_nRequired | Record.m_nOptional | FIELD_OP | FIELD_SESSION | FIELD_CLIENT;
    const unsigned int nExtra = nSeen & ~nTaken;
    if (nMissing != 0)
        strFault.Format(L"%s needs %s", Record.m_pName, name_Field(nMissing));
    else if (nExtra != 0)
        strFault.Format(L"%s takes no %s", Record.m_pName, name_Field(nExtra));
    return nMissing == 0 && nExtra == 0;
}

} // namespace

bool Read_Request(const Lib_String& strLine, const Clock& clock, Request& Result, Lib_String& strFault)
{
    Lib_Strings_Table* pParsed = nullptr;
    if (Lib_Parse_String(strLine, pParsed) == 0)
    {
        strFault = L"there is no field=value";
        return false;
    }
    const std::unique_ptr<Lib_Strings_Table> pTable(pParsed);

    unsigned int nSeen = 0;
    Lib_String strName;
    Lib_String strValue;
    for (unsigned long long i = 0; pTable->Get_Pair(i, strName, strValue); ++i)
    {
        strValue.TrimLeft();
        strValue.TrimRight();
        if (!read_Pair(strName, strValue, Result, nSeen, strFault))
            return false;
    }
    if (!check_Fields(Result.m_Operation, nSeen, strFault))
        return false;
    if ((nSeen & FIELD_UNTIL) != 0)
        Result.m_Until = clock.Read(Result.m_strUntil);
    if ((nSeen & FIELD_UNTIL) != 0 && !Result.m_Until)
    {
        strFault.Format(L"until is not %s", DATE_DEMAND);
        return false;
    }
    return true;
}

const wchar_t* Get_Operation_Name(Operation operation)
{
    return OPERATIONS[static_cast<int>(operation)].m_pName;
}

static_assert(std::size(OPERATIONS) == static_cast<std::size_t>(Operation::leave) + 1);
