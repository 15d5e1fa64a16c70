#ifndef QNLIB_TEST_OTHER_THREAD_H
#define QNLIB_TEST_OTHER_THREAD_H

#include <thread>

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

} // namespace test_support

#endif
