#ifndef QNLIB_LIB_PLATFORM_H
#define QNLIB_LIB_PLATFORM_H

// The one door to the platform: its types, constants and operations under their Win32 names. On Windows
// they are the system's own; elsewhere the library's platform layer provides them, each with the result,
// the last error and the untouched outputs that the system documents.

#if defined(_WIN32)

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <aclapi.h>
#include <dpapi.h>
#include <objbase.h>
#include <shlobj.h>
#include <wincrypt.h>

#include <locale.h>
#include <oleauto.h>
#include <process.h>
#include <stdio.h>
#include <time.h>
#include <wchar.h>

#else

#if !defined(__SIZEOF_WCHAR_T__) || __SIZEOF_WCHAR_T__ != 2
#error "qnLib needs a 16-bit wchar_t: compile with -fshort-wchar (the CMake target and the .pc file carry it)"
#endif

#include "platform/crypt.h"
#include "platform/folders.h"
#include "platform/guid.h"
#include "platform/kernel.h"
#include "platform/memory.h"
#include "platform/messages.h"
#include "platform/modules.h"
#include "platform/registry.h"
#include "platform/security.h"
#include "platform/sessions.h"
#include "platform/text.h"
#include "platform/threads.h"
#include "platform/time.h"
#include "platform/tokens.h"
#include "platform/types.h"

using namespace qn_platform;

#endif

#endif
