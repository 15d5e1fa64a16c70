#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_SLEEP_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_SLEEP_H

#include "platform/kernel/deadline.h"
#include "platform/kernel/named_state.h"

#include <span>

// Sleeping on the words of named objects, and the duties of those who slept: a waiter that is woken for one
// object and leaves with another passes on what the first one may have given it.

namespace qn_platform::kernel
{

/// One named object of a wait.
struct Place
{
    Named_Object* object;   // null: a place that is left out
    bool takes;             // of an event that resets itself: whether a signal can be handed to this thread
    std::uint32_t seen;     // event that stays set: its state when the wait came; event that resets itself:
                            // its tickets before the last sleep
    std::uint32_t expected; // what the state word holds while the thread sleeps
};

/// As many places of a wait can take what is handed over: each of them sleeps on two words.
inline constexpr std::size_t MOST_TAKERS = 61;

void Begin_Place(Place& place, Named_Object& object, bool takes);

/// Whether the object could be had now, without having slept on it.
bool Looks_Available(const Place& place, const Thread_Record& self);

/// What woke a thread is not told: it looks.
enum class Awake
{
    Perhaps_Woken, // on one of the words, or for no reason
    Did_Not_Sleep, // something was available at once
    Sliced         // slept without being on the words
};

/// Sleeps on all places, and on the thread's bell while it holds `*bell` (null: no bell). From before the
/// sleep until End_Duties the kernel sees to it that somebody else looks, should this thread die.
Awake Sleep_On(std::span<Place> places, const std::uint32_t* bell, Thread_Record& self, Deadline& deadline);
void End_Duties(Thread_Record& self);

/// Takes the event for a thread that has slept on it or looks again.
bool Take_Event(Place& place, Awake awake);

/// Gives back what the object may have given to this thread, which does not take it.
void Pass_On(Place& place, Awake awake);
/// That, for all places but one.
void Pass_On_All(std::span<Place> places, const Place* but, Awake awake);

} // namespace qn_platform::kernel

#endif
