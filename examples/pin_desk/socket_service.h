#ifndef PIN_DESK_SOCKET_SERVICE_H
#define PIN_DESK_SOCKET_SERVICE_H

#include "options.h"

// The desk as a service on a local socket, and its client; Linux alone has them. Both print why they cannot
// begin, and give their exit code.

constexpr int EXIT_SERVED = 0;
constexpr int EXIT_CUT_OFF = 1;   ///< the desk ended the conversation before all that was asked was answered
constexpr int EXIT_NO_SOCKET = 5; ///< another desk, another file or the system is in the way

/// Serves until SIGINT or SIGTERM, then ends in order: no new clients, the present ones are told, threads and
/// workers end, the socket's file is removed. Only the user of this process can connect, and root.
int Serve_Socket(const Lib_String& strPath, const Options& options, const Desk_Rules& Rules);

/// Hands standard input to the desk, line by line, and its answers to standard output.
int Ask_Socket(const Lib_String& strPath);

#endif
