#ifndef QNLIB_SERVICES_SECURITY_H
#define QNLIB_SERVICES_SECURITY_H

#include "lib_api.h"
#include "lib_platform.h"

// Security of objects and of the process: who may open an object, integrity labels, privileges. Any thread
// may call these at any time.

/// The attributes that make an object public: a descriptor with a null DACL, by which everybody has full
/// access, and handles that are inheritable. Always the same pointer; the caller neither changes nor frees
/// what it points to. NULL if the descriptor can't be built; the next call then tries again. Several first
/// calls at once wait for the one that builds it; a child that was forked during that one, by another thread,
/// would wait without end.
LIB_API _SECURITY_ATTRIBUTES* Lib_Get_Public_Security_Attributes();

/// Puts an integrity label on a named object: ulLevel is the level's relative identifier (0x1000 is low), and
/// who is below it may neither write nor read nor execute. False on failure, with the cause as the last
/// error: 126 or 127 if the system has no integrity labels, or what SetNamedSecurityInfoW says. On Linux,
/// where no process is below another one's level, an object that exists fails with 50 and one that doesn't
/// with 2, or with 3 if it is a file whose folder doesn't.
LIB_API bool Lib_Set_Low_Integrity_Access_Level(wchar_t* pName, _SE_OBJECT_TYPE Type, unsigned long ulLevel);

/// Switches a privilege of the process's token ("SeDebugPrivilege") on or off. False on failure, with the
/// cause as the last error: 1313 for an unknown name. True also if the token doesn't hold the privilege at
/// all.
LIB_API bool SetProcessPrivilege(wchar_t* pName, bool bEnable);

#endif
