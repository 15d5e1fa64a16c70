#ifndef QNLIB_PLATFORM_SESSIONS_H
#define QNLIB_PLATFORM_SESSIONS_H

#include "lib_api.h"
#include "platform/types.h"

// Tokens for the clients of a service, on Linux alone. Included through lib_platform.h only.
//
// On Windows a service gets its client's token from what the client came by (a pipe, a call) and impersonates
// it. Nothing on Linux hands out such tokens, so here are two ways to make one; what is done with it
// afterwards (SetThreadToken, OpenThreadToken, GetTokenInformation, RevertToSelf, closing the handle) is the
// same source on both targets. A service for both keeps the making of the token in a file for each.
//
// A session is the kernel's audit session (/proc/PID/sessionid), which a login gives to all its processes; a
// process without one, as of a service, counts as of session 0. What a thread does under a token changes for
// this library alone (which environment it is given, what it may open tokens for): the thread's user and
// group ids, and with them what the kernel allows it, stay those of the process.

namespace qn_platform
{

/// A handle to a new token for threads to bear, which stands for a client of that session and of this
/// process's user. The handle has all rights. `granted_access` (rights of tokens, generic ones too) is what
/// the token may be opened for while a thread bears it; other access is denied with 5, and what a token
/// without TOKEN_QUERY hides from the thread, the token of the process does not tell it either.
///
/// Null with the last error 87 for session 0xFFFFFFFF, which stands for a session that is not known, and for
/// rights that no token has; 8 or 4 when there is no room.
LIB_API HANDLE Lib_Create_Session_Token(unsigned int session_id, unsigned int granted_access);

/// The same for the process at the other end of a connected local stream socket: user and process are those
/// that the kernel noted when the connection was made (for a listener's side, when it began to listen), and
/// the session is the one that this process is of now. Nothing that the peer says counts. The token grants
/// TOKEN_QUERY, TOKEN_IMPERSONATE and TOKEN_DUPLICATE; the socket is only asked.
///
/// A process number that was used again meanwhile is not taken for the peer: the kernel's descriptor of the
/// peer tells (Linux 6.5 and later). Older kernels have none; there a peer whose end of the connection is
/// closed is refused, but one that ended and left its end to another process is not found out.
///
/// Null with the last error 6 for what is no socket, 50 for one that is not local, 233 when nobody is at the
/// other end (any more), as with a socket that listens, 5 for a peer that this process may not look at (one
/// in a foreign container), 8 or 4 when there is no room.
LIB_API HANDLE Lib_Create_Client_Token(int socket);

} // namespace qn_platform

#endif
