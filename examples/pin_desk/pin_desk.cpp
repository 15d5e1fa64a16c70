// The desk that keeps the PINs of its clients' cards: it takes requests from a file or from a socket, answers
// each of them and prints a line for each answer, and shows the library at work on the way. Other tasks
// watch, signal and guard a named event across processes, or write and list the user's policy.
//
// Exit codes: 0 when the file was read to its end, the limit or a stop signal, also with malformed lines in
// it; 1 when the report could not be written, memory ran out or there is no cipher for PINs, no lock or no
// journal that was asked for; 2 when the command line or the file is no good; 6 when the user's policy is
// damaged or cannot be read. Those of the other tasks are told in socket_service.h, policy.h and watch.h.

#include "file_service.h"
#include "host.h"
#include "options.h"
#include "socket_service.h"
#include "text_output.h"
#include "watch.h"

#include <algorithm>
#include <cerrno>
#include <lib_version.h>
#include <memory>
#include <new>
#include <stdexcept>

namespace
{

constexpr int EXIT_DONE = 0;
constexpr int EXIT_BROKEN = 1;
constexpr int EXIT_USAGE = 2;

class File_Source final : public Byte_Source
{
public:
    /// The file stays the caller's.
    explicit File_Source(std::FILE* pFile) : m_pFile(pFile) {}
    ~File_Source() override = default;

    std::size_t Read(char* pBytes, std::size_t nRoom) override
    {
        const long long nRead = Read_Bytes(m_pFile, pBytes, nRoom);
        m_nError = nRead < 0 ? errno : 0;
        return static_cast<std::size_t>(std::max(nRead, 0LL));
    }
    bool Has_Failed() const override { return m_nError != 0; }
    int Get_Error() const { return m_nError; }

private:
    std::FILE* m_pFile;
    int m_nError = 0;
};

/// Why a file can't be opened or read: errno as the platform's code for the same, and its text. Of a
/// directory the platform only says that it may not be read.
Lib_String tell_Reason(int nError)
{
    switch (nError)
    {
    case ENOENT:
    case ENOTDIR:
        return Get_Error_Text(ERROR_FILE_NOT_FOUND);
    case EISDIR:
        return L"it is a directory";
    case EACCES:
    case EPERM:
        return Get_Error_Text(ERROR_ACCESS_DENIED);
    default:
        return L"the system reports an error";
    }
}

/// Prints what is wrong, and the help.
int refuse(Options& options, const Lib_String& strFault)
{
    Print_Line(strFault + L".\n");
    options.Print_Help();
    return EXIT_USAGE;
}

int serve_File(Options& options, const Desk_Rules& Rules)
{
    const std::unique_ptr<std::FILE, Close_File> pFile(Open_For_Reading(options.Get_File()));
    int nError = errno;
    if (pFile != nullptr)
    {
        File_Source Source(pFile.get());
        if (Serve_File(Source, options, Rules))
            return EXIT_DONE;
        nError = Source.Get_Error();
    }
    return refuse(options, L"The file " + options.Get_File() + L" cannot be read: " + tell_Reason(nError));
}

int run_Desk(Options& options)
{
    const Policy policy;
    if (!policy.Get_Fault().Is_Empty())
    {
        Print_Line(L"The desk does not begin, since the user's policy is no good: " + policy.Get_Fault() +
                   L".");
        return EXIT_BAD_POLICY;
    }
    const Desk_Rules Rules = options.Get_Rules(policy);
    return options.Get_Served().Is_Empty() ? serve_File(options, Rules)
                                           : Serve_Socket(options.Get_Served(), options, Rules);
}

int run(int nArguments, wchar_t** ppArguments)
{
    Options options;
    Lib_String strFault;
    const bool bRead = options.Read(nArguments, ppArguments, strFault);
    if (options.Wants_Version())
    {
        Print_Line(Lib_String(L"pin_desk with qnLib ") + Lib_String(QNLIB_VERSION));
        return EXIT_DONE;
    }
    if (options.Wants_Help())
    {
        options.Print_Help();
        return EXIT_DONE;
    }
    if (!bRead)
        return refuse(options, strFault);
    if (!options.Get_Asked().Is_Empty())
        return Ask_Socket(options.Get_Asked());
    if (!options.Get_Setting().Is_Empty())
        return Set_Policy(options.Get_Setting());
    if (options.Wants_Policy())
        return Print_Policy();
    if (!options.Get_Watched().Is_Empty())
        return Watch(options.Get_Watched(), options.Get_Seconds());
    if (!options.Get_Signalled().Is_Empty())
        return Signal(options.Get_Signalled());
    if (!options.Get_Guarded().Is_Empty())
        return Guard(options.Get_Guarded(), options.Get_Seconds());
    return run_Desk(options);
}

} // namespace

int Run_Pin_Desk(int nArguments, wchar_t** ppArguments)
{
    try
    {
        const int nResult = run(nArguments, ppArguments);
        return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? nResult : EXIT_BROKEN;
    }
    catch (const std::bad_alloc&)
    {
        std::fputs("pin_desk: memory is exhausted\n", stderr);
        return EXIT_BROKEN;
    }
    catch (const std::exception& Error)
    {
        std::fprintf(stderr, "pin_desk: %s\n", Error.what());
        return EXIT_BROKEN;
    }
}
