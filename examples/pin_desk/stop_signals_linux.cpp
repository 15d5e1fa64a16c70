#include "stop_signals.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <stdexcept>

#include <sys/eventfd.h>
#include <unistd.h>

namespace
{

int bell = -1;
std::atomic<int> caught_Signal{0};

/// On whatever thread the system chooses.
void note(int nSignal)
{
    const int nError = errno;
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    caught_Signal = nSignal;
    const std::uint64_t nOne = 1;
    [[maybe_unused]] const ssize_t nWritten = write(bell, &nOne, sizeof(nOne));
    errno = nError;
}

} // namespace

void Catch_Stop_Signals()
{
    bell = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (bell < 0)
        throw std::runtime_error("signals cannot be waited for");
    for (const int nSignal : {SIGINT, SIGTERM})
        if (std::signal(nSignal, note) == SIG_IGN)
            std::signal(nSignal, SIG_IGN); // as shells have it for what runs in the background
}

const wchar_t* Get_Stop_Signal()
{
    const int nSignal = caught_Signal;
    return nSignal == 0 ? nullptr : nSignal == SIGINT ? L"SIGINT" : L"SIGTERM";
}

int Get_Stop_Bell() { return bell; }
