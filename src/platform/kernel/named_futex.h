#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_FUTEX_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_FUTEX_H

#include <atomic>
#include <cstdint>
#include <ctime>

struct futex_waitv;

// Futex calls on words that processes share. The program's errno stays as it was.

namespace qn_platform::kernel
{

inline constexpr int WAKE_ALL = 0x7FFFFFFF;

/// Wakes up to `count` sleepers.
void Wake_Shared(const std::atomic<std::uint32_t>& word, int count);

/// How Change_And_Wake changes a word.
enum class Word_Change : unsigned int
{
    Set_To,     // to the operand
    Set_To_Bit, // to the bit of that number and no other
    Add,
    Add_Bit, // the value of the bit of that number
    Or,
    Clear_Bit // of that number
};

/// Changes a word and wakes up to `count` sleepers of another (or the same), in one step that no waiter and
/// no death can come between. The answer is the number of those woken; negative if a word is not mapped.
int Change_And_Wake(const std::atomic<std::uint32_t>& sleepers, int count,
                    std::atomic<std::uint32_t>& changed, Word_Change change, unsigned int operand);

/// The same, but wakes all sleepers of both words.
void Change_And_Wake_Both(const std::atomic<std::uint32_t>& sleepers, std::atomic<std::uint32_t>& changed,
                          Word_Change change, unsigned int operand);

/// Sleeps while a word holds `expected`; answers 0 or the error number.
int Wait_Shared(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* time);

/// Sleeps while each of the words holds what is expected of it. The answer is the highest index that was
/// woken, or a negative error number.
int Wait_Many(futex_waitv* words, unsigned int count, const timespec* time);

/// Two words that every process of the machine can sleep on and none can change: zeros in the first bytes of
/// the C library's own file, as the loader mapped it. Null where that is not of the known form.
struct Gate
{
    const std::atomic<std::uint32_t>* alarm; // the kernel wakes one sleeper here
    const std::atomic<std::uint32_t>* all;   // who then wakes everybody here
};
const Gate* Find_Gate();

} // namespace qn_platform::kernel

#endif
