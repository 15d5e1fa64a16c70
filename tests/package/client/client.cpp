#include <lib_kernel.h>
#include <lib_strings.h>

#include <cstdio>

int main()
{
    Lib_String owner(L"Анна ");
    owner.TrimRight();
    Lib_StringA line;
    line.Format("card %04u, %u letters", 1u, static_cast<unsigned int>(owner.Get_Length() + 1));
    std::puts(line);

    // A provider is found beside the library, wherever that was put.
    const Lib_Library provider(L"crypt32");
    wchar_t path[1000] = L"";
    GetModuleFileNameW(provider, path, 1000);
    line.Format("crypt32 is %S", provider != nullptr ? path : L"missing");
    return std::puts(line) < 0;
}
