#ifndef QNLIB_BENCH_PING_PONG_H
#define QNLIB_BENCH_PING_PONG_H

#include <atomic>
#include <memory>
#include <thread>
#include <utility>

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// Works of two that wake one another in turn: one exchange is one work. `Make` answers a pair of signals with
// the operations Set and Wait; a second process makes its own pair.

namespace ping_pong
{

/// Answers each ping until it is told to stop.
template <class Pair>
void Answer(Pair& pair, const std::atomic<bool>& bStop)
{
    for (pair.first.Wait(); !bStop; pair.first.Wait())
        pair.second.Set();
}

template <class Make>
class Thread_Partner
{
public:
    explicit Thread_Partner(Make& make) : m_Pair(make()), m_Thread([this] { Answer(m_Pair, m_bStop); }) {}

    ~Thread_Partner()
    {
        m_bStop = true;
        m_Pair.first.Set();
        m_Thread.join();
    }

    auto& Get_Pair() { return m_Pair; }

private:
    decltype(std::declval<Make&>()()) m_Pair;
    std::atomic<bool> m_bStop{false};
    std::thread m_Thread;
};

template <class Make>
class Process_Partner
{
public:
    explicit Process_Partner(Make& make) : m_Pair(make()), m_nChild(fork())
    {
        if (m_nChild != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        auto pair = make();
        Answer(pair, *m_pStop);
        _exit(0);
    }

    ~Process_Partner()
    {
        *m_pStop = true;
        m_Pair.first.Set();
        waitpid(m_nChild, nullptr, 0);
    }

    auto& Get_Pair() { return m_Pair; }

private:
    static std::atomic<bool>* share_Flag()
    {
        void* pPage = mmap(nullptr, sizeof(std::atomic<bool>), PROT_READ | PROT_WRITE,
                           MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        return new (pPage) std::atomic<bool>(false);
    }

    decltype(std::declval<Make&>()()) m_Pair;
    std::atomic<bool>* m_pStop = share_Flag();
    pid_t m_nChild;
};

/// The partner starts with the first exchange, so a row that is not asked for costs nothing.
template <template <class> class Partner, class Make>
auto Work(Make make)
{
    return [make = std::move(make), pPartner = std::unique_ptr<Partner<Make>>()]() mutable
    {
        if (!pPartner)
            pPartner = std::make_unique<Partner<Make>>(make);
        auto& pair = pPartner->Get_Pair();
        pair.first.Set();
        pair.second.Wait();
        return 0;
    };
}

} // namespace ping_pong

#endif
