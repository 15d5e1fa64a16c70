#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_KEY_HANDLES_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_KEY_HANDLES_H

#include "platform/providers/advapi32/store.h"
#include "platform/registry.h"

// The handles to keys of this process. A value is generation << 22 | slot << 2 | 2: no handle of a kernel
// object ends with that 2, so neither table takes the other's for its own. A slot that was closed is used
// again last.

namespace qn_advapi32
{

using qn_platform::HKEY;
using qn_platform::REGSAM;

/// A key of a store.
struct Key_Place
{
    Store* store = nullptr;
    Id id = NO_KEY;

    bool Is_There() const { return id != NO_KEY; }
};

/// What a handle stands for. Below HKEY_CLASSES_ROOT that may be two keys, the user's and behind it the
/// machine's; everywhere else the second one is none.
struct Open_Key
{
    Key_Place first;
    Key_Place second;
    REGSAM access = 0;

    bool Is_Two() const { return first.Is_There() && second.Is_There(); }
};

/// A new handle. Null with the code 4 or 8 when there is no room.
HKEY Open_Key_Handle(const Open_Key& key, DWORD& error);

/// False if the value is no open handle.
bool Find_Key_Handle(HKEY handle, Open_Key& key);
bool Close_Key_Handle(HKEY handle);

// Around a fork, so that a child finds the table in order.
void Lock_Key_Handles();
void Unlock_Key_Handles();

} // namespace qn_advapi32

#endif
