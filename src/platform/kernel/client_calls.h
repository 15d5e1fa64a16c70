#ifndef QNLIB_SRC_PLATFORM_KERNEL_CLIENT_CALLS_H
#define QNLIB_SRC_PLATFORM_KERNEL_CLIENT_CALLS_H

#include "platform/types.h"

#include <poll.h>
#include <sys/socket.h>

// The calls by which the peer of a socket is asked for. They are made through this record, so that a test can
// put one that fails in the place of any of them, or force the ways of an older system (while no other thread
// is in the layer).

namespace qn_platform::kernel
{

struct Client_Calls
{
    int (*get_socket_option)(int socket, int level, int option, void* value, socklen_t* size);
    int (*poll_files)(pollfd* files, nfds_t count, int milliseconds);
    DWORD (*read_session)(int process, DWORD& session);
};

extern Client_Calls client_calls;

} // namespace qn_platform::kernel

#endif
