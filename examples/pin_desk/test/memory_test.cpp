// pin_desk_memory_test PROGRAM FILE: looks for PINs in the memory of the running desk. FILE is written with
// requests, first those with PINs and then many that fill the desk's output, which nobody reads: so the desk
// stops in the middle of its work, with the cards in its table.

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
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr const char* PINS[] = {"83920175", "47160392"};
constexpr const char* OWNER = "Zacharias Quimby";

void write_Requests(const char* pPath)
{
    std::ofstream File(pPath);
    File << "op=store card=0001 pin=" << PINS[0] << " owner=" << OWNER << "\n"
         << "op=check card=0001 pin=" << PINS[0] << "\n"
         << "op=change card=0001 pin=" << PINS[0] << " new=" << PINS[1] << "\n"
         << "op=check card=0001 pin=" << PINS[1] << "\n";
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

/// All that the desk can write to: heap, stack, and what modules and threads have.
std::vector<std::string> read_Memory(pid_t desk)
{
    std::vector<std::string> Memory;
    const std::string strFolder = "/proc/" + std::to_string(desk);
    std::ifstream Maps(strFolder + "/maps");
    const int nFile = open((strFolder + "/mem").c_str(), O_RDONLY);
    for (std::string strLine; std::getline(Maps, strLine);)
    {
        unsigned long nBegin = 0;
        unsigned long nEnd = 0;
        char access[8] = {};
        if (std::sscanf(strLine.c_str(), "%lx-%lx %7s", &nBegin, &nEnd, access) != 3 || access[1] != 'w')
            continue;
        std::string strPart(nEnd - nBegin, '\0');
        const ssize_t nRead = pread(nFile, strPart.data(), strPart.size(), static_cast<off_t>(nBegin));
        strPart.resize(nRead > 0 ? static_cast<std::size_t>(nRead) : 0);
        Memory.push_back(std::move(strPart));
    }
    close(nFile);
    return Memory;
}

bool contains(const std::vector<std::string>& Memory, const std::string& strWanted)
{
    for (const std::string& strPart : Memory)
    {
        if (strPart.find(strWanted) != std::string::npos)
            return true;
    }
    return false;
}

int check(const std::vector<std::string>& Memory)
{
    int nFaults = 0;
    const auto Expect = [&](bool bRight, const std::string& strFault)
    {
        if (!bRight)
            std::fprintf(stderr, "%s\n", strFault.c_str());
        nFaults += bRight ? 0 : 1;
    };
    Expect(contains(Memory, widen(OWNER)), "The owner is not found, so this looks in the wrong place.");
    for (const char* pPin : PINS)
    {
        Expect(!contains(Memory, pPin), std::string("In the desk's memory: ") + pPin);
        Expect(!contains(Memory, widen(pPin)), std::string("In the desk's memory, in 16 bits: ") + pPin);
    }
    return nFaults;
}

} // namespace

int main(int nArguments, char** ppArguments)
{
    if (nArguments != 3)
        return 2;
    write_Requests(ppArguments[2]);
    int ends[2];
    if (pipe(ends) != 0 || fcntl(ends[1], F_SETPIPE_SZ, 4096) < 0)
        return 2;
    const pid_t desk = fork();
    if (desk == 0)
    {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execl(ppArguments[1], ppArguments[1], "-in", ppArguments[2], static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[1]);
    const bool bStopped = wait_For_Stop(desk, ends[0]);
    const int nFaults = bStopped ? check(read_Memory(desk)) : 1;
    if (!bStopped)
        std::fprintf(stderr, "The desk did not fill its output.\n");
    kill(desk, SIGKILL);
    waitpid(desk, nullptr, 0);
    return nFaults == 0 ? 0 : 1;
}
