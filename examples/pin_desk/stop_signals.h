#ifndef PIN_DESK_STOP_SIGNALS_H
#define PIN_DESK_STOP_SIGNALS_H

/// From here on the first SIGINT or SIGTERM is noted, for the desk to end in order. The next one has its
/// usual effect again, so that a desk that does not come to its end can be ended.
void Catch_Stop_Signals();

/// The name of the one that has come; null as long as none has.
const wchar_t* Get_Stop_Signal();

/// Linux alone: a descriptor that can be read when one has come. The caller only polls it.
int Get_Stop_Bell();

#endif
