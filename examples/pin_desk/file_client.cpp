#include "file_client.h"

#include "client_thread.h"
#include "host.h"
#include "lock_guard.h"
#include "stack_wipe.h"

#include <optional>

namespace
{

/// No exception leaves a thread: it goes into the job, for the one who reports it.
void answer(Job& job, std::optional<Sessions::Visit>& visit, Sessions& All)
{
    try
    {
        if (!visit)
            visit.emplace(All);
        job.m_Answer = visit->Serve(job.m_Request);
    }
    catch (...)
    {
        job.m_pFailure = std::current_exception();
    }
}

} // namespace

File_Client::File_Client(Sessions& All, const Lib_Event& Progress) : m_All(All), m_Progress(Progress)
{
    m_Lock.Create(nullptr, false);
    m_Given.Create(nullptr, false, false);
}

File_Client::~File_Client()
{
    m_bLeave = true;
    m_Given.Set();
    if (m_Thread != nullptr)
        m_Thread.Wait(INFINITE);
}

bool File_Client::Start(unsigned int nSession, Lib_Result& result)
{
    if (m_Lock == nullptr || m_Given == nullptr)
    {
        result.Set_Result(ERROR_NOT_ENOUGH_MEMORY, 1);
        return false;
    }
    Lib_Handle Token;
    if (nSession != Sessions::Get_Own_Number())
    {
        Token.Attach(Make_Session_Token(nSession));
        if (Token == nullptr)
        {
            result.Set_Result(GetLastError(), 1);
            return false;
        }
    }
    return Start_Client_Thread(Token, &run, this, m_Thread, result);
}

void File_Client::Give(const std::shared_ptr<Job>& pJob)
{
    {
        const Lock_Guard Guard(m_Lock);
        m_Queue.push_back(pJob);
    }
    m_pLast = pJob;
    m_Given.Set();
}

unsigned int File_Client::run(void* pClient)
{
    static_cast<File_Client*>(pClient)->work();
    return 0;
}

void File_Client::work()
{
    std::optional<Sessions::Visit> visit;
    while (true)
    {
        m_Given.Wait(INFINITE);
        const bool bLeave = m_bLeave;
        while (const std::shared_ptr<Job> pJob = take())
        {
            answer(*pJob, visit, m_All);
            Wipe_Stack();
            pJob->m_bDone = true;
            m_Progress.Set();
        }
        if (bLeave)
            return;
    }
}

std::shared_ptr<Job> File_Client::take() noexcept
{
    const Lock_Guard Guard(m_Lock);
    if (m_Queue.empty())
        return nullptr;
    std::shared_ptr<Job> pJob = std::move(m_Queue.front());
    m_Queue.pop_front();
    return pJob;
}
