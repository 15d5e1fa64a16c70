#include "platform/kernel/named_object.h"

namespace qn_platform::kernel
{

Named_Answer Create_Named(const Named_Request&, Thread_Record&)
{
    return {nullptr, ERROR_CALL_NOT_IMPLEMENTED};
}

Named_Answer Open_Named(Kind, LPCWSTR) { return {nullptr, ERROR_CALL_NOT_IMPLEMENTED}; }

void Add_Reference(Named_Object&) {}
void Release_Reference(Named_Object&) {}
void Set_Named(Named_Object&, Thread_Record&) {}
void Reset_Named(Named_Object&, Thread_Record&) {}
void Pulse_Named(Named_Object&, Thread_Record&) {}
bool Release_Named_Mutex(Named_Object&, Thread_Record&) { return false; }
bool Try_Take_Named(Named_Object&, Thread_Record&, bool&) { return false; }
DWORD Wait_With_Named(std::span<Object* const>, bool, Deadline&, Thread_Record&) { return 0xFFFFFFFF; }
void Abandon_Named_Mutexes(Thread_Record&) {}
void Forget_Named_Objects() {}

} // namespace qn_platform::kernel
