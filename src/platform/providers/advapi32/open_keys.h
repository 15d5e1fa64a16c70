#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_OPEN_KEYS_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_OPEN_KEYS_H

#include "platform/providers/advapi32/key_handles.h"

// From a caller's handle and path to keys of stores.

namespace qn_advapi32
{

bool Is_Predefined(HKEY handle);

/// What a handle or a predefined key stands for; the latter is open for everything. 6 for what is neither. Of
/// two keys, one that was deleted is none; 1018 when both were.
DWORD Find_Open_Key(HKEY handle, Open_Key& key);

/// The same, with the rights looked at: 5 when one of `access` is missing.
DWORD Find_Open_Key_For(HKEY handle, REGSAM access, Open_Key& key);

/// A path from HKEY_USERS whose first name is the user's SID begins at the root of the user's store.
void Enter_User(Open_Key& base, Name& path);

/// From a key to the one at a path below it, which may be the key itself. 2, or 1018 when the base is gone.
DWORD Find_Below(Open_Key& key, const Name& path);

/// Whether there are such rights.
bool Are_Rights(REGSAM wanted);

/// The rights that a caller gets who asks for `wanted`, in `key`. 5, 19 or 3 when the store may not be
/// written, 87 for rights that there are not.
DWORD Grant(REGSAM wanted, Open_Key& key);

/// The key that is written to: the first one that is there.
inline const Key_Place& Get_Written(const Open_Key& key)
{
    return key.first.Is_There() ? key.first : key.second;
}

} // namespace qn_advapi32

#endif
