#include "fuzz_input.h"
#include "lib_platform.h"
#include "strings/string_a.h"
#include "strings/string_w.h"

#include <array>
#include <cstdarg>
#include <iterator>
#include <memory>
#include <sys/mman.h>
#include <utility>

// Format of both widths with the input as format. The arguments are the same for every format and fit every
// conversion: eight doubles for the floating-point registers, and slots that are pointers to text of either
// width as well as small integers, since their low 32 bits are small. No conversion takes more slots than
// it has characters.

namespace
{

constexpr std::size_t DOUBLES = 8;
constexpr std::size_t SLOTS = 80;
constexpr std::size_t LONGEST_FORMAT = SLOTS;
constexpr std::uintptr_t PAGE_SIZE = 4096;

/// A page of texts whose addresses have the given low half. Texts end with several NULs, so that they end
/// for either width wherever one begins.
char* make_Page(std::uintptr_t nAddress)
{
    void* pPage = mmap(reinterpret_cast<void*>(nAddress), PAGE_SIZE, PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    FUZZ_CHECK(pPage == reinterpret_cast<void*>(nAddress));
    auto* pBytes = static_cast<char*>(pPage);
    for (std::size_t i = 0; i < PAGE_SIZE; ++i)
        pBytes[i] = i % 32 < 28 ? static_cast<char>(i * 37 % 255 + 1) : '\0';
    return pBytes;
}

/// What a slot holds: nothing, a small number that points to a text, or a negative one that does.
const void* take_Slot(Fuzz_Input& Input)
{
    static char* const pSmall = make_Page(0x200000000000);
    static char* const pNegative = make_Page(0x2000FFFFF000);
    const unsigned int nByte = Input.Take_Byte();
    if (nByte == 0)
        return nullptr;
    return nByte < 224 ? pSmall + 2 * (nByte % 112) : pNegative + PAGE_SIZE - 2 * (nByte - 223) - 32;
}

constexpr double VALUES[] = {0.0, -1.5, 1.7976931348623157e308, 5e-324, 1.0 / 3, -123456789.125, 0.5, 1e15};

struct Arguments
{
    std::array<double, DOUBLES> m_Doubles;
    std::array<const void*, SLOTS> m_Slots;
};

Arguments take_Arguments(Fuzz_Input& Input, bool bFinite)
{
    Arguments Result;
    const unsigned int nFirst = Input.Take_Byte();
    for (std::size_t i = 0; i < DOUBLES; ++i)
        Result.m_Doubles[i] = VALUES[(i + nFirst) % std::size(VALUES)];
    if (!bFinite)
    {
        Result.m_Doubles[1] = -__builtin_inf();
        Result.m_Doubles[3] = __builtin_nan("");
    }
    // A few slots from the input, and those again and again.
    std::array<const void*, 8> Chosen;
    for (const void*& pSlot : Chosen)
        pSlot = take_Slot(Input);
    for (std::size_t i = 0; i < SLOTS; ++i)
        Result.m_Slots[i] = Chosen[i % Chosen.size()];
    return Result;
}

/// Any text, but numbers of at most three digits.
std::u16string take_Any_Format(Fuzz_Input& Input)
{
    std::u16string strFormat = Input.Take_Text(
        u"%%%%%%%%dduxXoicCsSsSeEgGfpnhlI64FLN#*0-+ ..*123579aAjztwqk\u0416\u00E9", LONGEST_FORMAT);
    std::size_t nDigits = 0;
    for (char16_t& ch : strFormat)
    {
        nDigits = ch >= u'0' && ch <= u'9' ? nDigits + 1 : 0;
        if (nDigits > 3)
            ch = u'd';
    }
    return strFormat;
}

/// Conversions that the reserve of Format knows whole, with a precision that it has room for.
std::u16string take_Known_Format(Fuzz_Input& Input)
{
    std::u16string strFormat;
    while (Input.Get_Left() != 0 && strFormat.size() + 12 < LONGEST_FORMAT)
    {
        static const char16_t* const aFlags[] = {u"", u"-", u"+", u"0", u" ", u"#", u"-+#", u"0#"};
        static const char16_t* const aWidths[] = {u"", u"1", u"7", u"40", u"*", u"250"};
        static const char16_t* const aPrecisions[] = {u"", u".", u".0", u".3", u".9"};
        static const char16_t* const aConversions[] = {
            u"d", u"u",  u"x",  u"X",  u"o",  u"I64d", u"I64x", u"hd", u"lu", u"c", u"C", u"hc", u"lc", u"s",
            u"S", u"hs", u"ls", u"hS", u"lS", u"e",    u"E",    u"g",  u"G",  u"f", u"p", u"n",  u"i"};
        if (Input.Take_Choice(4) == 0)
        {
            strFormat += Input.Take_Choice(2) == 0 ? u"text " : u"%%";
            continue;
        }
        const std::u16string strFlags = aFlags[Input.Take_Choice(std::size(aFlags))];
        const std::u16string strWidth = aWidths[Input.Take_Choice(std::size(aWidths))];
        std::u16string strPrecision = aPrecisions[Input.Take_Choice(std::size(aPrecisions))];
        const std::u16string strConversion = aConversions[Input.Take_Choice(std::size(aConversions))];
        // The trial print of `f` knows no sign of plus; only its decimals beyond the precision make up for
        // it.
        if (strConversion == u"f" && strFlags.find_first_of(u"+ ") != std::u16string::npos)
            strPrecision = u".3";
        strFormat += u'%' + strFlags + strWidth + strPrecision + strConversion;
    }
    return strFormat;
}

int print_Bounded(char* pBuffer, std::size_t nCapacity, const char* pFormat, std::va_list arguments)
{
    return _vsnprintf_s(pBuffer, nCapacity, _TRUNCATE, pFormat, arguments);
}

int print_Bounded(wchar_t* pBuffer, std::size_t nCapacity, const wchar_t* pFormat, std::va_list arguments)
{
    return _vsnwprintf_s(pBuffer, nCapacity, _TRUNCATE, pFormat, arguments);
}

constexpr std::size_t MOST_OUTPUT = 1 << 19; ///< more than any of these formats prints

/// Prints with as much room as is needed; the number of characters.
template <class Char>
std::size_t print_Whole(Char* pBuffer, const Char* pFormat, ...)
{
    std::va_list arguments;
    va_start(arguments, pFormat);
    const int nLength = print_Bounded(pBuffer, MOST_OUTPUT, pFormat, arguments);
    va_end(arguments);
    FUZZ_CHECK(nLength >= 0 && pBuffer[nLength] == 0);
    return static_cast<std::size_t>(nLength);
}

template <class String, class Char, std::size_t... nDouble, std::size_t... nSlot>
void check_Format(const Char* pFormat, const Arguments& arguments, bool bMust_Fit,
                  std::index_sequence<nDouble...>, std::index_sequence<nSlot...>)
{
    String strText; // its capacity is what Format reserves
    strText.Format(pFormat, arguments.m_Doubles[nDouble]..., arguments.m_Slots[nSlot]...);
    FUZZ_CHECK(strText.Get_Length() <= strText.Get_Alloc_Length());
    FUZZ_CHECK(strText.Get_At(strText.Get_Length()) == 0);

    static const auto pWhole = std::make_unique<Char[]>(MOST_OUTPUT);
    const std::size_t nWhole = print_Whole<Char>(pWhole.get(), pFormat, arguments.m_Doubles[nDouble]...,
                                                 arguments.m_Slots[nSlot]...);
    // `%c` can print a NUL, which ends the string and not the print.
    std::size_t nEnd = 0;
    while (nEnd < nWhole && pWhole[nEnd] != 0)
        ++nEnd;
    const bool bCut = strText.Get_Alloc_Length() < nEnd;
    FUZZ_CHECK(!bMust_Fit || strText.Get_Alloc_Length() >= nWhole);
    FUZZ_CHECK(strText.Get_Length() == (bCut ? strText.Get_Alloc_Length() : nEnd));
    for (std::size_t i = 0; i < strText.Get_Length(); ++i)
        FUZZ_CHECK(strText.Get_At(i) == pWhole[i]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize)
{
    Fuzz_Input Input(pData, nSize);
    const bool bKnown = Input.Take_Choice(2) == 1;
    const Arguments arguments = take_Arguments(Input, bKnown);
    const std::u16string strFormat = bKnown ? take_Known_Format(Input) : take_Any_Format(Input);
    constexpr std::make_index_sequence<DOUBLES> Doubles;
    constexpr std::make_index_sequence<SLOTS> Slots;
    check_Format<Lib_StringW, wchar_t>(Wide_Text(strFormat), arguments, bKnown, Doubles, Slots);
    check_Format<Lib_StringA, char>(Exact_Text<char>(strFormat), arguments, bKnown, Doubles, Slots);
    return 0;
}
