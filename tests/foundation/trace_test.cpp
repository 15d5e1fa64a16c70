#include "lib_foundation.h"
#include "test_text.h"

// Every form compiles, links and takes nothing at all.
TEST(Trace, Accepts_Every_Form_And_Does_Nothing)
{
    const Lib_String strNone;
    const wchar_t* const pNull = nullptr;
    const Lib_Buffer empty;
    Lib_Result result(5, 1);
    int nValue = 3;
    bool bValue = true;
    LIBT_PRINT_BOOL(nValue);
    LIBT_PRINT_BOOL(L"caption", nValue);
    LIBT_PRINT_bool(bValue);
    LIBT_PRINT_bool(strNone, bValue);
    LIBT_PRINT_BYTE(7);
    LIBT_PRINT_BYTE(strNone, 7);
    LIBT_PRINT_DWORD(GetLastError());
    LIBT_PRINT_DWORD(strNone, 7);
    LIBT_PRINT_PTR(strNone, nullptr);
    LIBT_PRINT_BUFFER(empty);
    LIBT_PRINT_BUFFER(strNone, empty);
    LIBT_PRINT_BUFFER(nullptr, 5);
    LIBT_PRINT_BUFFER(strNone, nullptr, 5);
    LIBT_PRINT_BUFFER_AS_STRING_A(nullptr, 5);
    LIBT_PRINT_BUFFER_AS_STRING_A(strNone, nullptr, 5);
    LIBT_PRINT_BUFFER_AS_STRING_W(nullptr, 5);
    LIBT_PRINT_BUFFER_AS_STRING_W(strNone, nullptr, 5);
    LIBT_PRINT_STRING(L"text");
    LIBT_PRINT_STRING(L"caption", L"text");
    LIBT_PRINT_STRING(pNull);
    LIBT_PRINT_STRING(pNull, pNull);
    LIBT_PRINT_RES(result);
    LIBT_PRINT_RES(L"caption", result);
    LIBT_PRINT_ERROR(strNone);
    LIBT_PRINT_ERROR(L"text", result);
    LIBT_PRINT_WARNING(strNone);
    LIBT_PRINT_TIME();
    LIBT_PRINT_TIME(strNone);
    LIBT_PRINT_THREAD_INFO(false);
    libtEnter_Function(strNone, strNone);
    libtLeave_Function(strNone, strNone);
    libtLeave_Function(strNone, strNone, 7U);
    libtLeave_Function(strNone, strNone, GetLastError());
    libtLeave_Function(strNone, strNone, -7LL);
    libtLeave_Function(strNone, strNone, -7, nullptr);
    libtLeave_Function(strNone, strNone, -7, &result);
    libtLeave_Function(strNone, strNone, true, nullptr);
    libtLeave_Function(strNone, strNone, true, &result);
    EXPECT_TRUE(result == Lib_Result(5, 1));
    EXPECT_EQ(3, nValue);
    EXPECT_TRUE(bValue);
    EXPECT_TEXT_EQ(L"", libtGet_Module_Name_With_Extension(reinterpret_cast<HINSTANCE>(8)));
}
