#ifndef QNLIB_ENVIRONMENT_ENVIRONMENT_PARAMS_H
#define QNLIB_ENVIRONMENT_ENVIRONMENT_PARAMS_H

#include "lib_api.h"

class Lib_Result;

/// The session of the calling thread: that of the token by which it impersonates somebody, else that of the
/// process. The token is read anew by each call.
///
/// | answer | session       | meaning                                                                 |
/// |--------|---------------|-------------------------------------------------------------------------|
/// | true   | the session   | the result may hold a code all the same: 1008 when the thread does not  |
/// |        |               | impersonate, 5 when its own token could not be asked but the process's  |
/// | true   | 0xFFFFFFFF    | access to the token is denied; the result holds 5                       |
/// | false  | 0             | the result holds the platform's code                                    |
///
/// Codes have the source 1; a result is not written to when no step fails. Any thread may call this at any
/// time. Nothing throws. The platform's last error may change.
LIB_API bool Acquire_Session_ID(unsigned int& dwSession_ID, Lib_Result& result);

/// Who a caller is, as Lib_Environment_Manager sees it: the session of its thread, and the process and thread
/// for the case that the session is not known. A plain value; one object is for one thread.
class LIB_API Lib_Environment_Params
{
public:
    /// The session of a caller whose token may not be asked.
    static constexpr unsigned int Session_Unknown = 0xFFFFFFFF;

    /// All identifiers are 0.
    Lib_Environment_Params() noexcept = default;
    Lib_Environment_Params(const Lib_Environment_Params& Source) noexcept = default;
    ~Lib_Environment_Params() = default;
    Lib_Environment_Params& operator=(const Lib_Environment_Params& Source) noexcept = default;

    /// Takes the identifiers of the calling thread. Answer, result and session as by Acquire_Session_ID;
    /// process and thread are taken also when that fails.
    bool Initialize(Lib_Result& result);

    /// Whether a caller with the identifiers on the left belongs to those on the right. The left session
    /// decides alone: if it is known, sessions have to be equal, and nothing else counts; if it is
    /// Session_Unknown, process and thread have to be equal, whatever the right session. So this is not
    /// symmetric.
    bool operator==(const Lib_Environment_Params& Other) const noexcept;
    bool operator!=(const Lib_Environment_Params& Other) const noexcept { return !(*this == Other); }

    unsigned int Get_Session_ID() const noexcept { return m_dwSession_ID; }
    unsigned int Get_Process_ID() const noexcept { return m_dwProcess_ID; }
    unsigned int Get_Thread_ID() const noexcept { return m_dwThread_ID; }

protected:
    /// The same as Initialize.
    bool init_IDs(Lib_Result& result);

    unsigned int m_dwSession_ID = 0;
    unsigned int m_dwProcess_ID = 0;
    unsigned int m_dwThread_ID = 0;
};

#endif
