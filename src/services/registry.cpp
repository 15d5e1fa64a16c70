#include "services/registry.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr DWORD MOST = 0xFFFFFFFF;

/// Whether it is success; the code goes to the caller either way.
bool tell(LSTATUS nCode, long* pError)
{
    if (pError != nullptr)
    {
        *pError = nCode;
    }
    return nCode == ERROR_SUCCESS;
}

/// The same, but that a success leaves the caller's variable alone.
bool tell_Failure(LSTATUS nCode, long* pError) { return nCode == ERROR_SUCCESS || tell(nCode, pError); }

LSTATUS create(HKEY hKey, const wchar_t* pPath, HKEY& hCreated)
{
    DWORD dwDisposition = 0;
    return RegCreateKeyExW(hKey, pPath, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &hCreated,
                           &dwDisposition);
}

/// A key itself, or one below it, which is closed at the end.
class Subkey
{
public:
    explicit Subkey(HKEY hKey) : m_hKey(hKey) {}
    Subkey(const Subkey&) = delete;
    Subkey& operator=(const Subkey&) = delete;
    ~Subkey()
    {
        if (m_bOpened)
        {
            RegCloseKey(m_hKey);
        }
    }

    LSTATUS Open(const wchar_t* pSubkey)
    {
        return pSubkey == nullptr ? ERROR_SUCCESS
                                  : take([&](HKEY& hOpened)
                                         { return RegOpenKeyExW(m_hKey, pSubkey, 0, KEY_READ, &hOpened); });
    }

    LSTATUS Create(const wchar_t* pSubkey)
    {
        return pSubkey == nullptr ? ERROR_SUCCESS
                                  : take([&](HKEY& hCreated) { return create(m_hKey, pSubkey, hCreated); });
    }

    operator HKEY() const { return m_hKey; }

private:
    template <class Open_It>
    LSTATUS take(const Open_It& open)
    {
        HKEY hOpened = nullptr;
        const LSTATUS nCode = open(hOpened);
        if (nCode == ERROR_SUCCESS)
        {
            m_hKey = hOpened;
            m_bOpened = true;
        }
        return nCode;
    }

    HKEY m_hKey;
    bool m_bOpened = false;
};

/// Reads the value into the buffer, which is given its size first.
LSTATUS read_Bytes(HKEY hKey, const wchar_t* pName, DWORD dwSize, DWORD& dwType, Lib_Buffer& Data)
{
    Data.Set_Size(dwSize);
    if (Data.Get_Size() != dwSize)
    {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    BYTE nNone = 0; // no room, but a question for the bytes: a value that is not empty any more fails
    BYTE* const pBytes = dwSize != 0 ? static_cast<BYTE*>(Data.Get_Ptr()) : &nNone;
    return RegQueryValueExW(hKey, pName, nullptr, &dwType, pBytes, &dwSize);
}

LSTATUS read_By_Name(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long& ulType,
                     Lib_Buffer& Data)
{
    Subkey Key(hKey);
    if (const LSTATUS nCode = Key.Open(pSubkey); nCode != ERROR_SUCCESS)
    {
        return nCode;
    }
    DWORD dwType = 0;
    DWORD dwSize = 0;
    LSTATUS nCode = RegQueryValueExW(Key, pName, nullptr, &dwType, nullptr, &dwSize);
    if (nCode == ERROR_SUCCESS || nCode == ERROR_MORE_DATA)
    {
        nCode = read_Bytes(Key, pName, dwSize, dwType, Data);
        ulType = dwType;
    }
    return nCode;
}

LSTATUS read_By_Index(HKEY hKey, const wchar_t* pSubkey, DWORD dwIndex, Lib_String& strName,
                      unsigned long& ulType, Lib_Buffer& Data)
{
    constexpr DWORD ROOM = 260;
    Subkey Key(hKey);
    if (const LSTATUS nCode = Key.Open(pSubkey); nCode != ERROR_SUCCESS)
    {
        return nCode;
    }
    wchar_t aName[ROOM + 1] = {};
    DWORD dwLength = ROOM;
    DWORD dwType = 0;
    DWORD dwSize = 0;
    LSTATUS nCode = RegEnumValueW(Key, dwIndex, aName, &dwLength, nullptr, &dwType, nullptr, &dwSize);
    if (nCode == ERROR_SUCCESS)
    {
        strName = aName;
        nCode = read_Bytes(Key, aName, dwSize, dwType, Data);
        ulType = dwType;
    }
    return nCode;
}

/// The text in so many bytes, up to its terminator if it has one.
Lib_String get_Text(const Lib_Buffer& Data)
{
    const auto* const pUnits = static_cast<const wchar_t*>(Data.Get_Ptr());
    const unsigned long long nUnits = Data.Get_Size() / sizeof(wchar_t);
    unsigned long long nLength = 0;
    while (nLength < nUnits && pUnits[nLength] != 0)
    {
        ++nLength;
    }
    Lib_String strText;
    if (nLength != 0)
    {
        std::memcpy(strText.Get_Buffer_Set_Length(nLength), pUnits, nLength * sizeof(wchar_t));
    }
    return strText;
}

LSTATUS write(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, DWORD dwType, unsigned long long nSize,
              const void* pData)
{
    Subkey Key(hKey);
    const LSTATUS nCode = Key.Create(pSubkey);
    if (nCode != ERROR_SUCCESS)
    {
        return nCode;
    }
    // What has no room in the size is as much too large as the largest size is: that is refused.
    const auto dwSize = static_cast<DWORD>(std::min<unsigned long long>(nSize, MOST));
    return RegSetValueExW(Key, pName, 0, dwType, static_cast<const BYTE*>(pData), dwSize);
}

} // namespace

bool Lib_Reg_Close_Key(HKEY hKey, long* pError) { return tell(RegCloseKey(hKey), pError); }

bool Lib_Reg_Open_Key(HKEY hKey, bool bRead, const wchar_t* pSubkey, HKEY& hOpened, long* pError)
{
    return tell_Failure(RegOpenKeyExW(hKey, pSubkey, 0, bRead ? KEY_READ : KEY_WRITE, &hOpened), pError);
}

bool Lib_Reg_Create_Key(HKEY hKey, const wchar_t* pPath, const wchar_t* pPath_Below, HKEY& hCreated,
                        long* pError)
{
    if (pPath == nullptr || pPath_Below == nullptr)
    {
        return tell_Failure(create(hKey, pPath != nullptr ? pPath : pPath_Below, hCreated), pError);
    }
    Lib_String strPath;
    strPath.Format(L"%s\\%s", pPath, pPath_Below);
    return tell_Failure(create(hKey, strPath, hCreated), pError);
}

bool Lib_Reg_Delete_Key_Value(HKEY hKey, const wchar_t* pName, long* pError)
{
    return hKey != nullptr && tell(RegDeleteKeyValueW(hKey, nullptr, pName), pError);
}

bool Lib_Reg_Read(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long& ulType,
                  Lib_Buffer& Data, long* pError)
{
    return tell(read_By_Name(hKey, pSubkey, pName, ulType, Data), pError);
}

bool Lib_Reg_Read(HKEY hKey, const wchar_t* pSubkey, unsigned long ulIndex, Lib_String& strName,
                  unsigned long& ulType, Lib_Buffer& Data, long* pError)
{
    const DWORD dwIndex = ulIndex < MOST ? static_cast<DWORD>(ulIndex) : MOST;
    return tell(read_By_Index(hKey, pSubkey, dwIndex, strName, ulType, Data), pError);
}

bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, Lib_Buffer& Data,
                         long* pError)
{
    unsigned long ulType = 0;
    return Lib_Reg_Read(hKey, pSubkey, pName, ulType, Data, pError);
}

bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, int nIndex, Lib_String& strName, Lib_Buffer& Data,
                         long* pError)
{
    unsigned long ulType = 0;
    return Lib_Reg_Read(hKey, pSubkey, static_cast<unsigned long>(nIndex), strName, ulType, Data, pError);
}

bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long& ulSize,
                         unsigned char* pArray, long* pError)
{
    unsigned long ulType = 0;
    Lib_Buffer Data;
    if (!Lib_Reg_Read(hKey, pSubkey, pName, ulType, Data, pError))
    {
        return false;
    }
    const unsigned long ulRoom = pArray != nullptr ? ulSize : 0;
    if (Data.Get_Size() > ulRoom)
    {
        return tell(ERROR_MORE_DATA, pError);
    }
    if (ulRoom != 0)
    {
        std::memset(pArray, 0, ulRoom);
    }
    if (Data.Get_Size() != 0)
    {
        std::memcpy(pArray, Data.Get_Ptr(), Data.Get_Size());
    }
    ulSize = static_cast<unsigned long>(Data.Get_Size());
    return true;
}

bool Lib_Reg_Read_DWord(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long& ulValue,
                        long* pError)
{
    DWORD dwValue = 0;
    unsigned long ulType = 0;
    Lib_Buffer Data;
    if (!Lib_Reg_Read(hKey, pSubkey, pName, ulType, Data, pError) || Data.Get_Size() != sizeof dwValue)
    {
        return false;
    }
    std::memcpy(&dwValue, Data.Get_Ptr(), sizeof dwValue);
    ulValue = dwValue;
    return true;
}

bool Lib_Reg_Read_String(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, Lib_String& strValue,
                         long* pError)
{
    unsigned long ulType = 0;
    Lib_Buffer Data;
    if (!Lib_Reg_Read(hKey, pSubkey, pName, ulType, Data, pError))
    {
        return false;
    }
    strValue = get_Text(Data);
    return true;
}

bool Lib_Reg_Write(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long ulType,
                   unsigned long ulSize, unsigned char* pData, long* pError)
{
    return tell_Failure(write(hKey, pSubkey, pName, static_cast<DWORD>(ulType), ulSize, pData), pError);
}

bool Lib_Reg_Write_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long ulSize,
                          unsigned char* pData, long* pError)
{
    return Lib_Reg_Write(hKey, pSubkey, pName, REG_BINARY, ulSize, pData, pError);
}

bool Lib_Reg_Write_DWord(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long ulValue,
                         long* pError)
{
    const auto dwValue = static_cast<DWORD>(ulValue);
    return tell_Failure(write(hKey, pSubkey, pName, REG_DWORD, sizeof dwValue, &dwValue), pError);
}

bool Lib_Reg_Write_String(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, const wchar_t* pText,
                          long* pError)
{
    const unsigned long long nSize = static_cast<unsigned long long>(lstrlenW(pText)) * sizeof(wchar_t);
    return tell_Failure(write(hKey, pSubkey, pName, REG_SZ, nSize, pText), pError);
}
