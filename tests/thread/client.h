#ifndef QNLIB_TEST_THREAD_CLIENT_H
#define QNLIB_TEST_THREAD_CLIENT_H

#include "lib_platform.h"

// What each target has of its own to impersonate somebody with.

namespace test_support
{

/// The calling thread bears a token from now on, until RevertToSelf.
bool Impersonate_Client();

/// Whether the calling thread bears one, made by that.
bool Works_For_Client();

} // namespace test_support

#endif
