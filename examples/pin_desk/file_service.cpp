#include "file_service.h"

#include "file_client.h"
#include "line_reader.h"
#include "stack_wipe.h"
#include "stop_signals.h"
#include "text_output.h"

#include <map>

namespace
{

constexpr std::size_t MOST_JOBS = 256;   // that were begun and not yet reported
constexpr std::size_t MOST_CLIENTS = 64; // at a time, since each has a thread

/// Hands jobs to their clients and reports them in the order in which they came.
class File_Service
{
public:
    File_Service(Sessions& All, Report& report) : m_All(All), m_Report(report)
    {
        m_Progress.Create(nullptr, false, false);
    }

    void Add_Malformed(unsigned int nLine, const Lib_String& strFault);
    /// The request is in the job.
    void Add_Request(const std::shared_ptr<Job>& pJob);

    /// Waits until everything is reported.
    void Finish();

    unsigned int Count_Requests() const { return m_nRequests; }

private:
    void add(const std::shared_ptr<Job>& pJob);
    File_Client* find_Client(Job& job);
    void wait_For(const Job& job);
    void report_Done();
    void report(const Job& job);

    Sessions& m_All;
    Report& m_Report;
    unsigned int m_nRequests = 0;
    unsigned int m_nOwn_Session = Sessions::Get_Own_Number();
    Lib_Event m_Progress;
    std::deque<std::shared_ptr<Job>> m_Jobs;            ///< in the file's order, those not yet reported
    std::map<unsigned int, Client_Name> m_Last_Clients; ///< of each session
    std::map<Client_Name, std::unique_ptr<File_Client>> m_Clients;
};

void File_Service::Add_Malformed(unsigned int nLine, const Lib_String& strFault)
{
    const auto pJob = std::make_shared<Job>();
    pJob->m_nLine = nLine;
    pJob->m_strFault = strFault;
    pJob->m_bDone = true;
    add(pJob);
}

void File_Service::Add_Request(const std::shared_ptr<Job>& pJob)
{
    const Request& request = pJob->m_Request;
    pJob->m_Client = {request.m_Session.value_or(m_nOwn_Session), request.m_nClient};
    File_Client* pClient = find_Client(*pJob);
    if (pClient == nullptr)
        pJob->m_bDone = true;
    else
        pClient->Give(pJob);
    add(pJob);
    if (pClient != nullptr && request.m_Operation == Operation::leave)
    {
        wait_For(*pJob);
        m_Clients.erase(pJob->m_Client);
    }
}

void File_Service::Finish()
{
    while (!m_Jobs.empty())
        wait_For(*m_Jobs.back());
}

void File_Service::add(const std::shared_ptr<Job>& pJob)
{
    ++m_nRequests;
    m_Jobs.push_back(pJob);
    report_Done();
    while (m_Jobs.size() >= MOST_JOBS)
        wait_For(*m_Jobs.front());
}

/// The client who is to be given the job, when those before him in the session have their answers; null with
/// the refusal in the job when there is no serving him.
File_Client* File_Service::find_Client(Job& job)
{
    Client_Name& last = m_Last_Clients.try_emplace(job.m_Client.m_nSession, job.m_Client).first->second;
    const auto before = m_Clients.find(last);
    const auto found = m_Clients.find(job.m_Client);
    if (before != m_Clients.end() && before != found)
        wait_For(*before->second->Get_Last_Job());
    if (found != m_Clients.end())
    {
        last = job.m_Client;
        return found->second.get();
    }
    if (m_Clients.size() >= MOST_CLIENTS)
    {
        job.m_Answer = {false, L"too many clients: no other one has left"};
        return nullptr;
    }
    auto pClient = std::make_unique<File_Client>(m_All, m_Progress);
    Lib_Result result;
    if (!pClient->Start(job.m_Client.m_nSession, result))
    {
        job.m_Answer = {false, L"no serving this session: " + Get_Error_Text(result.Get_Result_Code())};
        return nullptr;
    }
    last = job.m_Client;
    return (m_Clients[job.m_Client] = std::move(pClient)).get();
}

void File_Service::wait_For(const Job& job)
{
    while (!job.m_bDone)
        m_Progress.Wait(INFINITE);
    report_Done();
}

void File_Service::report_Done()
{
    while (!m_Jobs.empty() && m_Jobs.front()->m_bDone)
    {
        const std::shared_ptr<Job> pJob = std::move(m_Jobs.front());
        m_Jobs.pop_front();
        report(*pJob);
    }
}

void File_Service::report(const Job& job)
{
    if (job.m_pFailure)
        std::rethrow_exception(job.m_pFailure);
    if (job.m_strFault.Is_Empty())
        m_Report.Add_Answer(job.m_nLine, job.m_Client, job.m_Request, job.m_Answer);
    else
        m_Report.Add_Malformed(job.m_nLine, nullptr, job.m_strFault);
}

void serve_Line(unsigned int nLine, Lib_String& strLine, const Clock& clock, File_Service& Service)
{
    if (strLine.Is_Empty() || strLine.Get_At(0) == L'#')
        return;
    const auto pJob = std::make_shared<Job>(); // a copy of the request could lose its PIN for want of memory
    pJob->m_nLine = nLine;
    Lib_String strFault;
    const bool bRead = Read_Request(strLine, clock, pJob->m_Request, strFault);
    strLine.Empty(); // serving may take long
    Wipe_Stack();
    if (bRead)
        Service.Add_Request(pJob);
    else
        Service.Add_Malformed(nLine, strFault);
}

bool serve_Lines(Line_Reader& Reader, unsigned int nLimit, const Clock& clock, File_Service& Service)
{
    while (nLimit == 0 || Service.Count_Requests() < nLimit)
    {
        Lib_String strLine;
        const Line_Reader::State state = Reader.Read_Line(strLine);
        if (state == Line_Reader::State::failed)
            return false;
        if (state == Line_Reader::State::end || Get_Stop_Signal() != nullptr)
            break;
        if (state == Line_Reader::State::malformed)
            Service.Add_Malformed(Reader.Get_Line_Number(), strLine);
        else
            serve_Line(Reader.Get_Line_Number(), strLine, clock, Service);
        Wipe_Stack();
    }
    return true;
}

} // namespace

bool Serve_File(Byte_Source& Source, const Options& options, const Desk_Rules& Rules)
{
    Catch_Stop_Signals();
    Report report(options.Get_Style(false), Rules.m_Clock);
    {
        Sessions All(Rules, report);
        File_Service Service(All, report);
        Line_Reader Reader(Source);
        const bool bRead = serve_Lines(Reader, options.Get_Limit(), Rules.m_Clock, Service);
        Service.Finish();
        if (!bRead)
            return false;
        if (Get_Stop_Signal() != nullptr)
            report.Add_Note(Get_Stop_Signal() + Lib_String(L": the desk closes"));
        const auto Cards = All.Count_Cards();
        report.Print_Summary(&Cards);
    }
    report.Print_Sessions();
    return true;
}
