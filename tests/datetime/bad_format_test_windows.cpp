// A bad format must not reach the runtime, whose handler of invalid parameters may end the process.

#include "lib_datetime.h"
#include "test_text.h"

#include <stdlib.h>

namespace
{

int s_nCalls = 0;

void count_Call(const wchar_t*, const wchar_t*, const wchar_t*, unsigned int, uintptr_t) { ++s_nCalls; }

} // namespace

TEST(Bad_Format, Does_Not_Reach_The_Runtime)
{
    const auto previous = _set_invalid_parameter_handler(count_Call);
    const Lib_DateTime When(2004, 3, 5, 18, 3, 9);
    for (const wchar_t* pFormat : {L"%Q", L"x%", L"%#", L"%#Q", L"%d %"})
        EXPECT_TEXT_EQ(L"", When.Format(pFormat, 0x409));
    EXPECT_TEXT_EQ(L"% 5", When.Format(L"%% %#d", 0x409));
    EXPECT_EQ(0, s_nCalls);
    _set_invalid_parameter_handler(previous);
}
