#ifndef QNLIB_THREAD_MONITOR_THREAD_H
#define QNLIB_THREAD_MONITOR_THREAD_H

#include "foundation/lib_result.h"
#include "kernel/lib_event.h"
#include "kernel/lib_locker.h"

#include <atomic>
#include <memory>

/// Runs a caller's loop on a worker thread: a first step that Start waits for, a step of work again and again
/// until told to stop, a last step. Several users share one worker: the first Start makes it, the Stop that
/// matches ends it. A worker that fails by itself is reported by a callback on a thread of its own. The
/// worker bears the impersonation token of the thread that made it start. What is watched is the callbacks'
/// business:
///
/// | callback       | runs on                     | when                              | false             |
/// |----------------|-----------------------------|-----------------------------------|-------------------|
/// | Thread_Init    | the worker                  | first                             | fails the Start   |
/// | Thread_Work    | the worker                  | again and again, without a pause  | fails the run     |
/// | Thread_Done    | the worker                  | after the loop, failed or stopped | exit code 0       |
/// | Stop_Requested | the stopping thread, locked | once a stop, before its wait      | abandons the stop |
/// | Notify         | a thread of its own         | after a failure                   | (see below)       |
///
/// All but Thread_Work may be null. Thread_Work waits and paces itself, and must come back soon after the
/// stop event is set: Stop waits for it without limit. The result that the worker's callbacks get is the
/// worker's own and reaches nobody else. Stop_Requested must not call Start or Free on its object. Notify is
/// called with 0, 0 and the context, and the low 32 bits of its answer are its thread's exit code; nobody
/// waits for that thread, so Notify may still run when Stop, Free and the destructor have returned. No
/// exception may leave a callback.
///
/// | state          | Is_Active | users     | left by                                               |
/// |----------------|-----------|-----------|-------------------------------------------------------|
/// | empty          | false     | 0         | Init                                                  |
/// | idle           | false     | 0         | Start                                                 |
/// | running        | true      | 1 or more | the last Stop: idle; Thread_Work's false: failed      |
/// |                |           |           | Stop_Requested's false: stop abandoned                |
/// | failed         | false     | 0         | Start: running. Stop answers true and changes nothing |
/// | stop abandoned | false     | 1 or more | Free. Start counts, no more                           |
/// |                |           |           | The only user's Stop answers false: 0x80090027        |
///
/// A worker that fails after its stop was abandoned leads to failed as well. Free leads from each state to
/// empty. A Start that fails counts no user and leaves the object idle, ready for another: a worker that
/// cannot be resumed is ended, its procedure never run, and one whose coming up could not be waited for is
/// stopped, with its handle left for the next Start or Free to close.
///
/// Threads: any thread may call Init, Start, Stop and Free. They exclude one another from their first to
/// their last step, the waits for the worker included; the lock is recursive. Worker callbacks must not call
/// them on their own object; Notify may. Is_Active needs no lock. The control events and their names may be
/// asked for from Init to Free, beside everything but these two. Copying, assigning and destroying need the
/// objects to themselves, but for the worker.
///
/// What fails below: operations answer false, with the platform's code or 0x80090027 (a contradiction between
/// the object and its thread) and source 1 in the result, unless told otherwise. An object whose lock could
/// not be made does nothing and answers false.
///
/// A worker never outlives what it reads. Free, the destructor and assignment return only when the worker
/// that the object has started has left it alone, also after Stop_Requested has refused or the stop has
/// failed otherwise; then they wait although Stop does not. A worker that waits for an event that nobody sets
/// makes them wait forever. A Free that does not get the lock changes nothing; the destructor then stops the
/// worker without it. In a forked child there is no worker to wait for.
///
/// A worker that fails is seen as failed at once and as a whole: who sees Is_Active false, or starts after
/// that, finds no users. A run begins when the one before has ended, its Thread_Done and the making of its
/// notification included, and with all control events reset, so no Stop takes the end of an earlier run for
/// that of its own.
///
/// A copy is a further view of the same worker: fields are copied, with handles of its own to the same kernel
/// objects, the lock among them; users are counted by each object alone. What stops the worker through any
/// view stops it, and destroying a view stops it as well; the other views keep their fields,
/// Is_Active among them, and find it ended when they stop. A copy of an object that is not running can start
/// a worker of its own, which shares the control events with the others'.
class LIB_API Lib_Monitor_Thread
{
public:
    using Worker_Callback = bool (*)(void* pContext, Lib_Result& result);
    using Notify_Callback = long long (*)(unsigned int nCode, unsigned long long nParam, long long nContext);

    /// Empty.
    Lib_Monitor_Thread();
    Lib_Monitor_Thread(const Lib_Monitor_Thread& Source);

    /// Free.
    ~Lib_Monitor_Thread();

    /// Ends the worker that this object has started itself, as Free does, then copies.
    Lib_Monitor_Thread& operator=(const Lib_Monitor_Thread& Source);

    /// Takes the callbacks and the context, which stays the caller's, and makes the control events: unnamed,
    /// manual, not set. pStop_Event, if not null, receives the stop event as by Get_Control_Events. Nothing
    /// looks at the callbacks here, and nothing is written to the result; dwTimeout is kept and not used.
    /// False if the object has them already, which changes nothing.
    bool Init(Worker_Callback pfnThread_Init, Worker_Callback pfnThread_Work, Worker_Callback pfnThread_Done,
              Worker_Callback pfnStop_Requested, Notify_Callback pfnNotify, void* pContext,
              Lib_Event* pStop_Event, Lib_Result& result, unsigned int dwTimeout);

    /// Adds a user. The first one makes the worker and waits until it has come up: false, with one user less,
    /// if it has not. The result is untouched when the worker itself gave up (Thread_Init's false, a missing
    /// Thread_Work), and may hold why the worker has no token (1008) also when the answer is true.
    bool Start(Lib_Result& result);

    /// Takes one user away. The last one stops the worker and waits until it has ended; without any user
    /// nothing happens. False if the stop did not succeed, and the user stays, unless the worker failed just
    /// then.
    bool Stop(Lib_Result& result);

    /// Stops the worker whatever the number of users, and forgets everything that Init was given. The answer
    /// is that of the stop, the rest happens in any case: 0x80090027 for an object whose worker has failed or
    /// whose stop was abandoned, and whose thread's handle is there from such a time, Init and Free in
    /// between or not. False, with the result untouched, if Init has not been called.
    bool Free(Lib_Result& result);

    /// Whether a worker runs and nobody has begun to stop it.
    bool Is_Active() const { return m_bActive; }

    /// Assigns the stop event to *pStop_Event: a handle of its own to the same event. Null does nothing.
    void Get_Control_Events(Lib_Event* pStop_Event) const;

    /// Assigns the stop event's name, which is empty. Null does nothing.
    void Get_Control_Event_Names(Lib_String* pStop_Event_Name) const;

protected:
    // For those who have the lock: make the worker and wait for it; stop it and wait.
    bool start_Work_Internal(Lib_Result& result);
    bool stop_Work_Internal(Lib_Result& result);

    /// Calls Notify on a new thread, which bears this thread's token. Returns when that thread has taken what
    /// it needs. If there is no callback, or no thread to be had, nothing happens.
    void notify_On(unsigned int nCode, unsigned long long nParam);
    void stopped_On_Error();

    /// The thread procedures: of the worker, whose argument is the object and whose exit code is 1 if it came
    /// up and was stopped in order, and of the notification, whose argument is what notify_On hands over.
    static unsigned int PROC_Work_Internal(void* pObject);
    static unsigned int start_User_Proc(void* pRecord);

    Lib_Locker_With_Counter m_lckSynchronizer_Counter; ///< the object's lock and the number of users
    bool m_bInitialized = false;
    Lib_Handle m_hThread; ///< stays when the worker ends by itself, until the next Start
    std::atomic<bool> m_bActive = false;
    unsigned int m_dwTimeout = 500;
    void* m_pContext = nullptr; ///< not owned
    Lib_Event m_evStarted;
    Lib_Event m_evStop;
    Lib_Event m_evFinished;
    Worker_Callback m_pfnThread_Init = nullptr;
    Worker_Callback m_pfnThread_Work = nullptr;
    Worker_Callback m_pfnThread_Done = nullptr;
    Worker_Callback m_pfnStop_Requested = nullptr;
    Notify_Callback m_pfnNotify = nullptr;

private:
    struct Run;
    struct Notification;
    class Guard;

    void copy_Fields(const Lib_Monitor_Thread& Source);
    bool make_Run(Lib_Result& result);
    bool make_Worker(Lib_Result& result);
    bool wait_For_Start(Lib_Result& result);
    bool take_Exit(DWORD dwWait, Lib_Result& result);
    DWORD wait_For_End(); // of a worker that is there
    void await_Worker();  // the same, whether it is there or not, and without an answer
    void close_Events();
    bool has_Failed() const;

    void end_For_Good();
    bool is_Own_Run() const;

    unsigned int work();
    bool come_Up(Lib_Result& result);
    unsigned int work_Until_Stopped(Run& run, Lib_Result& result);
    void end_Failed(Run& run, Lib_Result& result);

    std::shared_ptr<Run> m_pRun; ///< the latest run, shared with its worker and with copies
};

#endif
