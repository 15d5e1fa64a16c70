#ifndef QNLIB_LIB_API_H
#define QNLIB_LIB_API_H

#if __cplusplus < 202002L && (!defined(_MSVC_LANG) || _MSVC_LANG < 202002L)
#error "qnLib needs C++20: compile with -std=c++20"
#endif

// LIB_API marks what the module exports: it stands at the class or function it exports, and everything
// without it stays inside. QNLIB_BUILDING is defined while the module itself is compiled, QNLIB_STATIC for
// a static build and for the clients of one.
#if defined(_WIN32) && defined(QNLIB_STATIC)
#define LIB_API
#elif defined(_WIN32) && defined(QNLIB_BUILDING)
#define LIB_API __declspec(dllexport)
#elif defined(_WIN32)
#define LIB_API __declspec(dllimport)
#else
#define LIB_API __attribute__((visibility("default")))
#endif

#endif
