#ifndef PIN_DESK_FILE_CLIENT_H
#define PIN_DESK_FILE_CLIENT_H

#include "report.h"

#include <atomic>
#include <deque>
#include <exception>
#include <memory>

/// One line of the request file, from its reading to its report.
struct Job
{
    unsigned int m_nLine = 0;
    Lib_String m_strFault; ///< what is wrong with a malformed line; empty for a request
    Client_Name m_Client;
    Request m_Request;
    Answer m_Answer;
    std::exception_ptr m_pFailure;    ///< instead of an answer
    std::atomic<bool> m_bDone{false}; ///< answer and failure are the reader's from here on
};

/// A client of the request file: a thread that impersonates the client's session and answers his requests in
/// their order. One thread gives it its requests.
class File_Client
{
public:
    /// `Progress` is set after each answer.
    File_Client(Sessions& All, const Lib_Event& Progress);
    File_Client(const File_Client&) = delete;
    File_Client& operator=(const File_Client&) = delete;

    /// Has the client leave when he has been answered, and waits for that.
    ~File_Client();

    bool Start(unsigned int nSession, Lib_Result& result);
    void Give(const std::shared_ptr<Job>& pJob);

    /// The job that was given last.
    const Job* Get_Last_Job() const { return m_pLast.get(); }

private:
    static unsigned int run(void* pClient);
    void work();
    std::shared_ptr<Job> take() noexcept; ///< without its lock the client can't go on, nor the desk wait

    Sessions& m_All;
    const Lib_Event& m_Progress;
    std::shared_ptr<Job> m_pLast;
    Lib_Mutex m_Lock; ///< of the queue
    std::deque<std::shared_ptr<Job>> m_Queue;
    Lib_Event m_Given; ///< set when there is something in the queue, or the client is to leave
    std::atomic<bool> m_bLeave{false};
    Lib_Synchro m_Thread;
};

#endif
