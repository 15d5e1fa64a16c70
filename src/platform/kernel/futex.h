#ifndef QNLIB_SRC_PLATFORM_KERNEL_FUTEX_H
#define QNLIB_SRC_PLATFORM_KERNEL_FUTEX_H

#include <atomic>
#include <cstdint>
#include <ctime>

// Sleeping on a word of this process's own memory.

namespace qn_platform::kernel
{

/// Sleeps while the word holds `expected`. May end for no reason, a signal among them. False when `time`
/// (absolute, CLOCK_MONOTONIC; null: none) has passed.
bool Futex_Wait(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* time);

/// Wakes one sleeper. Memory that has been released meanwhile must at least still be readable.
void Futex_Wake_One(const std::atomic<std::uint32_t>& word);

} // namespace qn_platform::kernel

#endif
