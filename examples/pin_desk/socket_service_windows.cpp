#include "socket_service.h"

#include "text_output.h"

namespace
{

int tell_Absence(const wchar_t* pTask)
{
    Print_Line(Lib_String(pTask) + L" is not there on this system: it works on Linux's local sockets.");
    return EXIT_NO_SOCKET;
}

} // namespace

int Serve_Socket(const Lib_String&, const Options&, const Desk_Rules&) { return tell_Absence(L"-serve"); }
int Ask_Socket(const Lib_String&) { return tell_Absence(L"-ask"); }
