#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_STATE_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_STATE_H

#include "platform/kernel/named_name.h"
#include "platform/kernel/object.h"
#include "platform/kernel/robust_list.h"

#include <atomic>
#include <cstdint>

// What a named object is in memory: the page that all its users share, the private page behind it, and this
// process's own record. docs/kernel-objects.md explains the words.

namespace qn_platform::kernel
{

using State_Word = std::atomic<std::uint32_t>;

// The bits of a state word, as the kernel knows them from robust mutexes.
inline constexpr std::uint32_t WAITERS = 0x80000000;    // somebody may sleep on the word
inline constexpr std::uint32_t MARK = 0x40000000;       // a signal is there, or the owner died
inline constexpr std::uint32_t OWNER_MASK = 0x3FFFFFFF; // the thread that owns or claims it
inline constexpr unsigned int WAITERS_BIT = 31;
inline constexpr unsigned int MARK_BIT = 30;

// The word of tickets: how many were taken and, above, how many handed out, both around and around; the rest
// moves on with each offer of a signal to everybody. A count that runs over moves that on, too.
inline constexpr std::uint32_t TICKETS_MASK = 0xFFF;
inline constexpr unsigned int HANDED_OUT_BIT = 12;
inline constexpr unsigned int OFFERS_BIT = 24;

inline constexpr std::uint64_t PAGE_MAGIC = 0x6A624F626C4E5171;
inline constexpr std::uint32_t PAGE_VERSION = 2;
inline constexpr std::size_t NAMED_PAGE_SIZE = 4096;

/// The mapping of one object. Only numbers are shared; what is used as a pointer lies in the private page.
struct Named_Page
{
    // Written once, before anybody else sees the file.
    std::uint64_t magic;
    std::uint32_t version;
    Kind kind;
    std::uint8_t manual_reset;
    std::uint16_t name_length;
    wchar_t name[MOST_NAME_UNITS];

    alignas(64) State_Word manual_state; // of an event that stays set: odd is set; a count of its changes
    alignas(64) State_Word tickets;      // of an event that resets itself: the signals handed to sleepers
    char unused[3428];
    State_Word state; // of a mutex, or of an event that resets itself
    char unused2[12];
    State_Word claim; // of a mutex that a wait for all is taking
    char unused3[4];

    // From here on private to the process. The C library fixes where the node of a word is.
    Robust_Node state_node;
    Robust_Node claim_node;
};

static_assert(offsetof(Named_Page, state_node) == NAMED_PAGE_SIZE);
static_assert(offsetof(Named_Page, state_node.next) == offsetof(Named_Page, state) + ROBUST_DISTANCE);
static_assert(offsetof(Named_Page, claim_node.next) == offsetof(Named_Page, claim) + ROBUST_DISTANCE);

/// How often a thread can take a mutex that it has.
inline constexpr unsigned int MOST_RECURSION = 0x7FFFFFFF;

inline constexpr std::size_t MAPPING_SIZE = 2 * NAMED_PAGE_SIZE;

/// This process's record of an object. Its memory is used again but never given back.
class Named_Object
{
public:
    std::atomic<Named_Page*> page{nullptr};
    std::atomic<Thread_Record*> owner{nullptr}; // of a mutex: the thread of this process that has it
    unsigned int recursion = 0;                 // these three are touched by the owner only
    Named_Object* next_owned = nullptr;
    Named_Object* previous_owned = nullptr;
    Kind kind = Kind::Free;
    bool manual_reset = false;
    bool exposed = false; // another user can write its file, so what the page says proves nothing

    std::atomic<unsigned int> references{0};
    bool lingering = false;       // no references, but a thread owns it: gone when that releases it or ends
    unsigned long long inode = 0; // of the file: all processes agree on the order of objects by it
    unsigned int hash = 0;
    Named_Object* next_in_list = nullptr; // of those with this hash, or of the free ones
    Named_Object* next = nullptr;         // all ever made
    char path[sizeof Object_Name::path];

    Named_Page& Page() const { return *page.load(std::memory_order_relaxed); }
    bool Is_Mutex() const { return kind == Kind::Mutex; }
};

} // namespace qn_platform::kernel

#endif
