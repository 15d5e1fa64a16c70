// pin_desk_memory_test PROGRAM FILE: looks for PINs, and for copies of the key, in the memory of the running
// desk. FILE is written with requests, first those with PINs and then many that fill the desk's output, which
// nobody reads: so the desk stops in the middle of its work, with the cards in its table. Then the same when
// it serves a client on a socket, who is still there.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const char* PINS[] = {"83920175", "47160392"};
constexpr const char* OWNER = "Zacharias Quimby";
constexpr std::size_t KEY_SIZE = 64;

/// Four requests, and one that is refused before it is looked at.
std::string write_Lines()
{
    std::ostringstream Lines;
    Lines << "op=store card=0001 pin=" << PINS[0] << " owner=" << OWNER << "\n"
          << "op=check card=0001 pin=" << PINS[0] << "\n"
          << "op=change card=0001 pin=" << PINS[0] << " new=" << PINS[1] << "\n"
          << "op=check card=0001 pin=" << PINS[1] << "\n"
          << "op=check card=0001 pin=" << PINS[1] << " session=999999\n";
    return Lines.str();
}

void write_Requests(const char* pPath)
{
    std::ofstream File(pPath);
    File << write_Lines();
    for (int i = 0; i < 600; ++i)
        File << "op=show card=0001\n";
}

/// Digits in the program's 16-bit text.
std::string widen(std::string_view text)
{
    std::string wide;
    for (const char ch : text)
        wide.append({ch, '\0'});
    return wide;
}

/// Waits until the desk sleeps with its output full.
bool wait_For_Stop(pid_t desk, int output)
{
    for (int i = 0; i < 1000; ++i)
    {
        usleep(10'000);
        std::ifstream Stat("/proc/" + std::to_string(desk) + "/stat");
        std::string strLine;
        std::getline(Stat, strLine);
        int nWaiting = 0;
        ioctl(output, FIONREAD, &nWaiting);
        if (nWaiting >= 4096 && strLine.find(") S") != std::string::npos)
            return true;
    }
    return false;
}

struct Memory
{
    std::vector<std::string> m_Parts; ///< what the desk can write to: heap, stack, modules' and threads' data
    std::string m_strKey; ///< from the nameless page that can be read only and is left out of dumps
};

std::string read_Part(int nFile, unsigned long nBegin, unsigned long nEnd)
{
    std::string strPart(nEnd - nBegin, '\0');
    const ssize_t nRead = pread(nFile, strPart.data(), strPart.size(), static_cast<off_t>(nBegin));
    strPart.resize(nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
    return strPart;
}

Memory read_Memory(pid_t desk)
{
    Memory Found;
    const std::string strFolder = "/proc/" + std::to_string(desk);
    std::ifstream Maps(strFolder + "/smaps");
    const int nFile = open((strFolder + "/mem").c_str(), O_RDONLY);
    const auto nPage = static_cast<unsigned long>(getpagesize());
    unsigned long nPlace = 0; // of a page that may be the key's, or 0
    for (std::string strLine; std::getline(Maps, strLine);)
    {
        unsigned long nBegin = 0;
        unsigned long nEnd = 0;
        char access[8] = {};
        if (std::sscanf(strLine.c_str(), "%lx-%lx %7s", &nBegin, &nEnd, access) == 3)
        {
            const bool bNameless = strLine.find_first_of("/[") == strLine.npos;
            nPlace = bNameless && access == std::string_view("r--p") && nEnd - nBegin == nPage ? nBegin : 0;
            if (access[1] == 'w')
                Found.m_Parts.push_back(read_Part(nFile, nBegin, nEnd));
        }
        else if (nPlace != 0 && strLine.starts_with("VmFlags:") && strLine.find(" dd") != strLine.npos)
            Found.m_strKey += read_Part(nFile, nPlace, nPlace + KEY_SIZE);
    }
    close(nFile);
    return Found;
}

bool contains(const Memory& Memory, const std::string& strWanted)
{
    for (const std::string& strPart : Memory.m_Parts)
    {
        if (strPart.find(strWanted) != std::string::npos)
            return true;
    }
    return false;
}

std::vector<std::string> find_Faults(const Memory& Memory)
{
    std::vector<std::string> Faults;
    if (Memory.m_strKey.size() != KEY_SIZE)
        Faults.push_back("No page, or more than one, looks like the key's.");
    for (std::size_t at = 0; at < Memory.m_strKey.size(); at += 16) // expanded keys hold them too
    {
        if (contains(Memory, Memory.m_strKey.substr(at, 16)))
            Faults.push_back("In the desk's memory: a part of the key.");
    }
    if (!contains(Memory, widen(OWNER)))
        Faults.push_back("The owner is not found, so this looks in the wrong place.");
    for (const char* pPin : PINS)
    {
        if (contains(Memory, pPin))
            Faults.push_back(std::string("In the desk's memory: ") + pPin);
        if (contains(Memory, widen(pPin)))
            Faults.push_back(std::string("In the desk's memory, in 16 bits: ") + pPin);
    }
    return Faults;
}

/// A thread that has just answered still has the request for a moment: so it is looked at until nothing is
/// found, for a second.
int check(pid_t desk)
{
    std::vector<std::string> Faults;
    for (int i = 0; i < 50; ++i)
    {
        Faults = find_Faults(read_Memory(desk));
        if (Faults.empty())
            return 0;
        usleep(20'000);
    }
    for (const std::string& strFault : Faults)
        std::fprintf(stderr, "%s\n", strFault.c_str());
    return 1;
}

/// The desk with its output on the descriptor.
pid_t start_Desk(const char* pProgram, const char* pTask, const char* pPath, int output)
{
    const pid_t desk = fork();
    if (desk != 0)
        return desk;
    dup2(output, STDOUT_FILENO);
    execl(pProgram, pProgram, pTask, pPath, static_cast<char*>(nullptr));
    _exit(127);
}

void end_Desk(pid_t desk)
{
    kill(desk, SIGKILL);
    waitpid(desk, nullptr, 0);
}

int check_File(const char* pProgram, const char* pFile)
{
    write_Requests(pFile);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || fcntl(ends[1], F_SETPIPE_SZ, 4096) < 0)
        return 2;
    const pid_t desk = start_Desk(pProgram, "-in", pFile, ends[1]);
    close(ends[1]);
    const bool bStopped = wait_For_Stop(desk, ends[0]);
    const int nFaults = bStopped ? check(desk) : 1;
    if (!bStopped)
        std::fprintf(stderr, "The desk did not fill its output.\n");
    close(ends[0]);
    end_Desk(desk);
    return nFaults;
}

/// Waits for that many lines.
bool read_Lines(int nFile, int nLines)
{
    char ch = 0;
    while (nLines > 0 && read(nFile, &ch, 1) == 1)
        nLines -= ch == '\n' ? 1 : 0;
    return nLines == 0;
}

/// Asks on the socket, and looks when all is answered.
int check_Service(const char* pProgram, const char* pSocket)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return 2;
    const pid_t desk = start_Desk(pProgram, "-serve", pSocket, ends[1]);
    close(ends[1]);
    sockaddr_un Address{};
    Address.sun_family = AF_UNIX;
    std::snprintf(Address.sun_path, sizeof(Address.sun_path), "%s", pSocket);
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const std::string strLines = write_Lines();
    const bool bAnswered = read_Lines(ends[0], 1) && // it serves
                           connect(client, reinterpret_cast<sockaddr*>(&Address), sizeof(Address)) == 0 &&
                           write(client, strLines.data(), strLines.size()) > 0 && read_Lines(client, 5);
    const int nFaults = bAnswered ? check(desk) : 1;
    if (!bAnswered)
        std::fprintf(stderr, "The desk did not answer on its socket.\n");
    close(client);
    close(ends[0]);
    end_Desk(desk);
    unlink(pSocket);
    return nFaults;
}

} // namespace

int main(int nArguments, char** ppArguments)
{
    char folder[] = "/tmp/desk.XXXXXX"; // the paths of sockets are short
    if (nArguments != 3 || mkdtemp(folder) == nullptr)
        return 2;
    alarm(50);
    const std::string strSocket = std::string(folder) + "/s";
    const int nFaults =
        check_File(ppArguments[1], ppArguments[2]) + check_Service(ppArguments[1], strSocket.c_str());
    rmdir(folder);
    return nFaults == 0 ? 0 : 1;
}
