#ifndef QNLIB_SRC_PLATFORM_KERNEL_PAGE_GUARD_H
#define QNLIB_SRC_PLATFORM_KERNEL_PAGE_GUARD_H

#include "platform/kernel/thread_record.h"

// A page of a file that another user can write goes away when that user truncates the file; touching it then
// is SIGBUS. The guard handles that signal for the pages of named objects: it puts a page of zeros in the
// place of the lost one, so the process goes on with an object that nobody else sees. Other faults go on to
// the handler that was there before.

namespace qn_platform::kernel
{

/// In the calling thread.
void Unblock_Faults();

/// Puts the handler in place, once a process, before the first page is mapped that needs it. A handler that
/// the program installs later takes the protection away.
void Guard_Pages();

/// Where the signal is blocked it ends the process, whatever handler there is: a thread that comes to touch
/// such a page has it blocked no more.
inline void Let_Faults_Through(Thread_Record& self)
{
    if (!self.hears_faults)
    {
        Unblock_Faults();
        self.hears_faults = true;
    }
}

} // namespace qn_platform::kernel

#endif
