#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_FILE_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_FILE_H

#include "platform/kernel/named_object.h"
#include "platform/kernel/named_state.h"

// The files of named objects: how they come to be, are shared, and go. Called with the process's list of
// named objects locked, which also keeps a fork out.

namespace qn_platform::kernel
{

/// Maps the object of that name, which is made if `create` says so; a new mutex is `self`'s if that is asked
/// for. Fills in the record. The answer is 0; 183 if it was there although it was to be made; otherwise the
/// reason why not, with nothing mapped.
DWORD Attach_File(Named_Object& object, const Object_Name& name, const Named_Request& request, bool create,
                  Thread_Record* self);

/// Unmaps the object, and removes its file if this was the last user.
void Detach_File(Named_Object& object);

/// The two halves of that. Removing looks for users in other processes only, and answers whether there were
/// none.
void Unmap_File(Named_Object& object);
bool Remove_File_If_Unused(const Named_Object& object);

} // namespace qn_platform::kernel

#endif
