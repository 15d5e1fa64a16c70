#include "stop_signals.h"

#include <atomic>
#include <csignal>

// Windows has SIGINT alone, for Ctrl+C, and takes its handler off when it calls it.

namespace
{

std::atomic<bool> was_Caught{false};

void note(int) { was_Caught = true; }

} // namespace

void Catch_Stop_Signals() { std::signal(SIGINT, note); }

const wchar_t* Get_Stop_Signal() { return was_Caught ? L"SIGINT" : nullptr; }
