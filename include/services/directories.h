#ifndef QNLIB_SERVICES_DIRECTORIES_H
#define QNLIB_SERVICES_DIRECTORIES_H

#include "lib_api.h"
#include "strings/string_w.h"

// The directories in which the product family keeps data of the current user. All paths are absolute, have
// the platform's form with backslashes and none at the end; on Linux Lib_Get_Native_Path (lib_platform.h)
// makes them paths for its own calls. Unlike the rest of the library these report failure by
// std::runtime_error alone, with the text that is told here; nothing tells the platform's code.
// std::bad_alloc may leave too.
//
// Where they are on Linux: include/platform/folders.h. Any thread may call these at any time.

/// The folder for the user's data. "Error while obtaining AppData path".
LIB_API Lib_StringW localDirectoryPath();

/// The folder for the user's data of this machine that processes of low integrity may write. "Error while
/// obtaining AppDataLow path".
LIB_API Lib_StringW localLowDirectoryPath();

/// The maker's directory: localLowDirectoryPath, or localDirectoryPath if that is empty, and "\Vorel Co".
/// Their texts. Nobody looks whether it exists.
LIB_API Lib_StringW companyDirectory();

/// The directory of cached PIN data: companyDirectory and "\Quillon". Its texts. Nobody looks whether it
/// exists.
LIB_API Lib_StringW pinCacheDirectory();

/// The same, and makes it and what is missing above it, for the user alone (on Linux with the mode 0700; on
/// Windows with the rights that are inherited); what is there already keeps its owner and its mode, whatever
/// they are. Those texts, and "Error creating directory".
LIB_API Lib_StringW createPinCacheDirectory();

#endif
