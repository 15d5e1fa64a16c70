#ifndef QNLIB_SERVICES_REGISTRY_H
#define QNLIB_SERVICES_REGISTRY_H

#include "foundation/buffer.h"
#include "lib_api.h"
#include "lib_platform.h"
#include "strings/lib_string.h"

// The registry without its sequences of open, query and close. A key is an open one or a predefined root, and
// stays the caller's; a subkey is a path below it, and null the key itself; the name of a value may be null
// or empty for the key's default value. What a function opens it closes.
//
// The answer is true on success. `pError`, which may be null in every function, receives the platform's code:
//
// | function                             | on success | on failure                         |
// |--------------------------------------|------------|------------------------------------|
// | Close_Key, all that read             | 0          | the code                           |
// | Delete_Key_Value                     | 0          | the code; untouched for a null key |
// | Open_Key, Create_Key, all that write | untouched  | the code                           |
//
// No function throws but for want of memory, std::bad_alloc from texts; a buffer that could not be had is
// failure 8. Any thread may call these at any time. Nothing is kept between calls, and each call that reads
// asks the platform twice: a value that grows in between fails with 234.

/// Closes a key that the caller has opened.
LIB_API bool Lib_Reg_Close_Key(HKEY hKey, long* pError);

/// Opens a key for reading (KEY_READ) or writing (KEY_WRITE). The caller closes it. A failure may set hOpened
/// to null: let it not be the variable that alone holds hKey.
LIB_API bool Lib_Reg_Open_Key(HKEY hKey, bool bRead, const wchar_t* pSubkey, HKEY& hOpened, long* pError);

/// Opens a key for reading and writing, and makes it and those above it where they are missing. The path is
/// the two pieces with one backslash between them, or the one that is not null, or null. The caller closes
/// the key. A failure may set hCreated to null.
LIB_API bool Lib_Reg_Create_Key(HKEY hKey, const wchar_t* pPath, const wchar_t* pPath_Below, HKEY& hCreated,
                                long* pError);

/// Removes a value of the key. A null key is refused at once.
LIB_API bool Lib_Reg_Delete_Key_Value(HKEY hKey, const wchar_t* pName, long* pError);

/// Reads a value by its name: its type, and its bytes as they are. A value that is not there (2) leaves both
/// alone. The buffer has the size that was told first, also when the value is smaller by the time it is read,
/// and when its reading fails.
LIB_API bool Lib_Reg_Read(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long& ulType,
                          Lib_Buffer& Data, long* pError);

/// The same by a place in the key's order, which gives the name too; 259 beyond the last one, and 234 for a
/// name of more than 259 units. The name stays set when the reading fails then.
LIB_API bool Lib_Reg_Read(HKEY hKey, const wchar_t* pSubkey, unsigned long ulIndex, Lib_String& strName,
                          unsigned long& ulType, Lib_Buffer& Data, long* pError);

/// Lib_Reg_Read without the type. A negative place is beyond the last one.
LIB_API bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, Lib_Buffer& Data,
                                 long* pError);
LIB_API bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, int nIndex, Lib_String& strName,
                                 Lib_Buffer& Data, long* pError);

/// Reads a value into an array of ulSize bytes, which get the value's bytes and zeros behind them; ulSize is
/// the value's size then, 0 for an empty one. A value that is larger than the array fails with 234, and every
/// failure leaves array and size alone. A null array has no bytes, whatever ulSize says.
LIB_API bool Lib_Reg_Read_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                 unsigned long& ulSize, unsigned char* pArray, long* pError);

/// Reads a value of exactly 4 bytes, whatever its type. False, with the error 0, for one of another size. A
/// failure leaves ulValue alone.
LIB_API bool Lib_Reg_Read_DWord(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                unsigned long& ulValue, long* pError);

/// Reads a value as text, whatever its type: up to the first NUL, or all of its whole units if it has none. A
/// failure leaves strValue alone.
LIB_API bool Lib_Reg_Read_String(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                 Lib_String& strValue, long* pError);

/// Writes a value of ulSize bytes; the subkey, unless null, is made where it is missing, and stays also when
/// the writing fails. Of ulType the low 32 bits are written. On Linux 1450 for more than 64 MiB.
LIB_API bool Lib_Reg_Write(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName, unsigned long ulType,
                           unsigned long ulSize, unsigned char* pData, long* pError);

/// Lib_Reg_Write with REG_BINARY, with REG_DWORD, and with REG_SZ: a text without its terminator, null being
/// the empty one. Of ulValue the low 32 bits are written.
LIB_API bool Lib_Reg_Write_Binary(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                  unsigned long ulSize, unsigned char* pData, long* pError);
LIB_API bool Lib_Reg_Write_DWord(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                 unsigned long ulValue, long* pError);
LIB_API bool Lib_Reg_Write_String(HKEY hKey, const wchar_t* pSubkey, const wchar_t* pName,
                                  const wchar_t* pText, long* pError);

#endif
