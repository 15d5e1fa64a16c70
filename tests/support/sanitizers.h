#ifndef QNLIB_TEST_SANITIZERS_H
#define QNLIB_TEST_SANITIZERS_H

// What the program was instrumented with: g++ tells by macros, clang++ by features.

#if defined(__has_feature)
#define QNLIB_TEST_HAS_FEATURE(feature) __has_feature(feature)
#else
#define QNLIB_TEST_HAS_FEATURE(feature) 0
#endif

namespace test_support
{

#if defined(__SANITIZE_ADDRESS__) || QNLIB_TEST_HAS_FEATURE(address_sanitizer)
inline constexpr bool With_Address_Sanitizer = true;
#else
inline constexpr bool With_Address_Sanitizer = false;
#endif

#if defined(__SANITIZE_THREAD__) || QNLIB_TEST_HAS_FEATURE(thread_sanitizer)
inline constexpr bool With_Thread_Sanitizer = true;
#else
inline constexpr bool With_Thread_Sanitizer = false;
#endif

/// Whether a process with other threads can be forked for more than an exec: the child may find a sanitizer's
/// memory or its list of modules locked by a thread that it lacks, the thread sanitizer forbids it new
/// threads, and to the leak checker what the other threads held is lost in it.
inline constexpr bool Forks_Beside_Threads = !With_Address_Sanitizer && !With_Thread_Sanitizer;
inline constexpr const char* NO_FORK = "a sanitizer does not bear such a child";

} // namespace test_support

#endif
