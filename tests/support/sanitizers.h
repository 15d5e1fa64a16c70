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

} // namespace test_support

#endif
