#ifndef QNLIB_TEST_OTHER_THREAD_H
#define QNLIB_TEST_OTHER_THREAD_H

#include <cstddef>
#include <thread>
#include <vector>

namespace test_support
{

/// What a call answers on a thread of its own, which has ended then.
template <class Call>
auto On_Other_Thread(const Call& call)
{
    decltype(call()) answer{};
    std::thread([&] { answer = call(); }).join();
    return answer;
}

/// Calls on several threads at once, each with its number, and waits for their end.
template <class Call>
void On_Threads(std::size_t nThreads, const Call& call)
{
    std::vector<std::thread> threads;
    for (std::size_t nThread = 0; nThread < nThreads; ++nThread)
        threads.emplace_back([&call, nThread] { call(nThread); });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace test_support

#endif
