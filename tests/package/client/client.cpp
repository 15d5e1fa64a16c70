#include <lib_strings.h>

#include <cstdio>

int main()
{
    Lib_String owner(L"Анна ");
    owner.TrimRight();
    Lib_StringA line;
    line.Format("card %04u, %u letters", 1u, static_cast<unsigned int>(owner.Get_Length() + 1));
    return std::puts(line) < 0;
}
