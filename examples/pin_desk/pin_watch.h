#ifndef PIN_DESK_PIN_WATCH_H
#define PIN_DESK_PIN_WATCH_H

#include <lib_thread.h>

/// The worker of a session, which wipes PINs when they expire. What it does at a time is the session's, how
/// it sleeps in between is here: it costs nothing until the next PIN expires, a first PIN is there, or it is
/// stopped.
class Pin_Watch : public Lib_Monitor_Thread
{
public:
    /// Starts the worker. Work gets the context and must end each time with a Sleep. What it has to say of
    /// its death it says itself: a notification could come when its session is gone and another one in its
    /// place.
    bool Begin(Worker_Callback pfnWork, void* pContext, Lib_Result& result)
    {
        return Init(nullptr, pfnWork, nullptr, nullptr, nullptr, pContext, nullptr, result, 0) &&
               Start(result);
    }

    /// For the worker: false if it cannot sleep.
    bool Sleep(Lib_Event& Alarm, unsigned long nMilliseconds)
    {
        LibT_Array<Lib_Synchro*, 4> objects;
        objects.Add(&m_evStop);
        objects.Add(&Alarm);
        return Lib_Synchro::Wait_Multiple(&objects, false, nMilliseconds) != WAIT_FAILED;
    }
};

#endif
