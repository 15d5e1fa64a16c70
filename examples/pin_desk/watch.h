#ifndef PIN_DESK_WATCH_H
#define PIN_DESK_WATCH_H

#include <lib_strings.h>

// Three processes about one named event: one watches for it, one signals it, and one stands guard, which the
// watching ones see: by name, the event is the desk's way to say "go on", and the guard's mutex its way to
// notice that who should say so is gone. They find one another by the name alone, in any order, and when the
// last one ends nothing is left behind. Each prints lines of "<name>: <what happened>" and gives its exit
// code.

constexpr int EXIT_SIGNALLED = 0;
constexpr int EXIT_ABANDONED = 3; ///< the guard ended without giving its mutex back
constexpr int EXIT_TIMED_OUT = 4;
constexpr int EXIT_NO_OBJECT = 5; ///< the platform, or another guard, is in the way; the line says why

/// Waits until the event is signalled, the guard is lost or the time is over; 0 seconds wait without end.
/// All who watch are told of each, and guards may come and go meanwhile.
int Watch(const Lib_String& strName, unsigned int nSeconds);

/// Signals the event to all who watch.
int Signal(const Lib_String& strName);

/// Stands guard for that time. There is one guard at a time.
int Guard(const Lib_String& strName, unsigned int nSeconds);

#endif
