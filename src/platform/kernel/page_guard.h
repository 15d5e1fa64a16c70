#ifndef QNLIB_SRC_PLATFORM_KERNEL_PAGE_GUARD_H
#define QNLIB_SRC_PLATFORM_KERNEL_PAGE_GUARD_H

// A page of a file that another user can write goes away when that user truncates the file; touching it then
// is SIGBUS. The guard handles that signal for the pages of named objects: it puts a page of zeros in the
// place of the lost one, so the process goes on with an object that nobody else sees. Other faults go on to
// the handler that was there before.

namespace qn_platform::kernel
{

/// Puts the handler in place, once a process, before the first page is mapped that needs it. A handler that
/// the program installs later takes the protection away.
void Guard_Pages();

} // namespace qn_platform::kernel

#endif
