#include "platform/kernel/named_futex.h"

#include "platform/kernel/named_calls.h"
#include "platform/kernel/robust_list.h"

#include <cerrno>
#include <cstring>

#include <elf.h>
#include <link.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace qn_platform::kernel
{

namespace
{

std::uint32_t* plain_Word(const std::atomic<std::uint32_t>& word)
{
    return reinterpret_cast<std::uint32_t*>(const_cast<std::atomic<std::uint32_t>*>(&word));
}

/// The result, or the negative error number.
long call_Futex(const std::atomic<std::uint32_t>& word, int operation, std::uint32_t value,
                const timespec* time, std::uint32_t* word2, std::uint32_t value3)
{
    const int nSaved = errno;
    const long nResult = named_calls.futex(plain_Word(word), operation, value, time, word2, value3);
    const long nAnswer = nResult < 0 ? -errno : nResult;
    errno = nSaved;
    return nAnswer;
}

unsigned int kernel_Operation(Word_Change change)
{
    switch (change)
    {
    case Word_Change::Set_To:
        return FUTEX_OP_SET;
    case Word_Change::Set_To_Bit:
        return FUTEX_OP_SET | FUTEX_OP_OPARG_SHIFT;
    case Word_Change::Add:
        return FUTEX_OP_ADD;
    case Word_Change::Add_Bit:
        return FUTEX_OP_ADD | FUTEX_OP_OPARG_SHIFT;
    case Word_Change::Or:
        return FUTEX_OP_OR;
    case Word_Change::Clear_Bit:
        break;
    }
    return FUTEX_OP_ANDN | FUTEX_OP_OPARG_SHIFT;
}

} // namespace

void Wake_Shared(const std::atomic<std::uint32_t>& word, int count)
{
    call_Futex(word, FUTEX_WAKE, static_cast<std::uint32_t>(count), nullptr, nullptr, 0);
}

namespace
{

/// The call also wakes sleepers of the changed word, where the value before compares as told to one that is
/// never there; at worst somebody looks in vain, or sleeps on.
int change_And_Wake(const std::atomic<std::uint32_t>& sleepers, int count,
                    std::atomic<std::uint32_t>& changed, Word_Change change, unsigned int operand,
                    unsigned int comparison)
{
    // What this thread wrote before is seen by whoever finds the kernel's change: said in a way that the
    // compiler, and tools that look for races, understand too.
    changed.fetch_or(0, std::memory_order_acq_rel);
    constexpr std::uint32_t NEVER = 0x800;
    const std::uint32_t nEncoded = kernel_Operation(change) << 28 | comparison << 24 | operand << 12 | NEVER;
    const std::uintptr_t nAlso = WAKE_ALL; // in the place of a time
    return static_cast<int>(call_Futex(sleepers, FUTEX_WAKE_OP, static_cast<std::uint32_t>(count),
                                       reinterpret_cast<const timespec*>(nAlso), plain_Word(changed),
                                       nEncoded));
}

} // namespace

int Change_And_Wake(const std::atomic<std::uint32_t>& sleepers, int count,
                    std::atomic<std::uint32_t>& changed, Word_Change change, unsigned int operand)
{
    return change_And_Wake(sleepers, count, changed, change, operand, FUTEX_OP_CMP_EQ);
}

void Change_And_Wake_Both(const std::atomic<std::uint32_t>& sleepers, std::atomic<std::uint32_t>& changed,
                          Word_Change change, unsigned int operand)
{
    change_And_Wake(sleepers, WAKE_ALL, changed, change, operand, FUTEX_OP_CMP_NE);
}

int Wait_Shared(const std::atomic<std::uint32_t>& word, std::uint32_t expected, const timespec* time)
{
    const long nResult = call_Futex(word, FUTEX_WAIT_BITSET, expected, time, nullptr, FUTEX_BITSET_MATCH_ANY);
    return nResult < 0 ? static_cast<int>(-nResult) : 0;
}

int Wait_Many(struct futex_waitv* words, unsigned int count, const timespec* time)
{
    const int nSaved = errno;
    const long nResult = named_calls.futex_waitv(words, count, time);
    const long nAnswer = nResult < 0 ? -errno : nResult;
    errno = nSaved;
    return static_cast<int>(nAnswer);
}

namespace
{

/// The place of the C library's file header in memory; null if the file is not among the loaded ones.
struct Header_Search
{
    const char* header = nullptr;

    static int Look_At(dl_phdr_info* info, std::size_t, void* search)
    {
        const char* const pSlash = std::strrchr(info->dlpi_name, '/');
        if (pSlash == nullptr || std::strncmp(pSlash, "/libc.so", 8) != 0)
        {
            return 0;
        }
        for (unsigned int i = 0; i < info->dlpi_phnum; ++i)
        {
            const auto& segment = info->dlpi_phdr[i];
            if (segment.p_type == PT_LOAD && segment.p_offset == 0 && (segment.p_flags & PF_W) == 0)
            {
                static_cast<Header_Search*>(search)->header =
                    reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
            }
        }
        return 1;
    }
};

Gate find_Gate()
{
    Header_Search search;
    dl_iterate_phdr(&Header_Search::Look_At, &search);
    if (search.header == nullptr)
    {
        return {nullptr, nullptr};
    }
    // The padding of the identification, and the type and machine behind it.
    const auto* const pAlarm = reinterpret_cast<const std::atomic<std::uint32_t>*>(search.header + 12);
    const auto* const pAll = reinterpret_cast<const std::atomic<std::uint32_t>*>(search.header + EI_NIDENT);
    return pAlarm->load(std::memory_order_relaxed) == 0 ? Gate{pAlarm, pAll} : Gate{nullptr, nullptr};
}

} // namespace

const Gate* Find_Gate()
{
    static const Gate gate = find_Gate();
    return gate.alarm != nullptr && named_calls.use_gate ? &gate : nullptr;
}

Robust_Head* Find_Robust_Head()
{
    Robust_Head* pHead = nullptr;
    std::size_t nSize = 0;
    if (::syscall(SYS_get_robust_list, 0, &pHead, &nSize) != 0 || pHead == nullptr ||
        nSize != sizeof(Robust_Head) || pHead->distance != -ROBUST_DISTANCE)
    {
        return nullptr;
    }
    return pHead;
}

} // namespace qn_platform::kernel
