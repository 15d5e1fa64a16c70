#ifndef QNLIB_SRC_THREAD_MONITOR_RUN_H
#define QNLIB_SRC_THREAD_MONITOR_RUN_H

#include "thread/monitor_thread.h"

inline constexpr unsigned int SOURCE_PLATFORM = 1;
inline constexpr unsigned int CODE_CONTRADICTION = 0x80090027;

// Exit codes of a worker.
inline constexpr unsigned int NOT_IN_ORDER = 0;
inline constexpr unsigned int IN_ORDER = 1;

/// The life of one worker, as far as the worker and all views of it have to agree on it.
struct Lib_Monitor_Thread::Run
{
    explicit Run(const Lib_Monitor_Thread* pObject) : m_pStarted_By(pObject) {}

    const Lib_Monitor_Thread* const m_pStarted_By; ///< whose fields the worker reads
    std::atomic<bool> m_bStopped = false;          ///< a view has begun to stop it
    std::atomic<bool> m_bFailed = false;           ///< it has begun to end by its own failure
    std::atomic<bool> m_bOver = false;             ///< it does not touch the object any more
};

#endif
