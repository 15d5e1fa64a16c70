#ifndef PIN_DESK_STACK_WIPE_H
#define PIN_DESK_STACK_WIPE_H

/// Wipes what finished calls have left on the calling thread's stack below its present end: compilers and the
/// dynamic linker put registers there, and parts of PINs with them. For threads that are about to wait.
void Wipe_Stack();

#endif
