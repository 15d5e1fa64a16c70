#ifndef QNLIB_FOUNDATION_TRACE_H
#define QNLIB_FOUNDATION_TRACE_H

#include "foundation/buffer.h"
#include "lib_api.h"
#include "lib_platform.h"
#include "strings/lib_string.h"

// The trace points that the library and the modules linked against it report their progress by. In this
// library they are silent: each accepts its arguments, null pointers too, looks at none of them, and does
// nothing. Any thread may call them at any time. A Lib_String in front of a value is its caption; sizes count
// bytes.

class Lib_Result;

LIB_API void LIBT_PRINT_BOOL(int& nValue);
LIB_API void LIBT_PRINT_BOOL(const Lib_String& strCaption, int& nValue);
LIB_API void LIBT_PRINT_bool(bool& bValue);
LIB_API void LIBT_PRINT_bool(const Lib_String& strCaption, bool& bValue);
LIB_API void LIBT_PRINT_BYTE(unsigned char ucValue);
LIB_API void LIBT_PRINT_BYTE(const Lib_String& strCaption, unsigned char ucValue);
LIB_API void LIBT_PRINT_DWORD(unsigned int dwValue);
LIB_API void LIBT_PRINT_DWORD(const Lib_String& strCaption, unsigned int dwValue);
LIB_API void LIBT_PRINT_PTR(const Lib_String& strCaption, void* pValue);

LIB_API void LIBT_PRINT_BUFFER(const Lib_Buffer& Value);
LIB_API void LIBT_PRINT_BUFFER(const Lib_String& strCaption, const Lib_Buffer& Value);
LIB_API void LIBT_PRINT_BUFFER(const unsigned char* pBytes, unsigned int nSize);
LIB_API void LIBT_PRINT_BUFFER(const Lib_String& strCaption, const unsigned char* pBytes, unsigned int nSize);
LIB_API void LIBT_PRINT_BUFFER_AS_STRING_A(const unsigned char* pBytes, unsigned int nSize);
LIB_API void LIBT_PRINT_BUFFER_AS_STRING_A(const Lib_String& strCaption, const unsigned char* pBytes,
                                           unsigned int nSize);
LIB_API void LIBT_PRINT_BUFFER_AS_STRING_W(const unsigned char* pBytes, unsigned int nSize);
LIB_API void LIBT_PRINT_BUFFER_AS_STRING_W(const Lib_String& strCaption, const unsigned char* pBytes,
                                           unsigned int nSize);

LIB_API void LIBT_PRINT_STRING(const Lib_String& strValue);
LIB_API void LIBT_PRINT_STRING(const Lib_String& strCaption, const Lib_String& strValue);
LIB_API void LIBT_PRINT_RES(const Lib_Result& Value);
LIB_API void LIBT_PRINT_RES(const Lib_String& strCaption, const Lib_Result& Value);
LIB_API void LIBT_PRINT_ERROR(const Lib_String& strText);
LIB_API void LIBT_PRINT_ERROR(const Lib_String& strText, const Lib_Result& Value);
LIB_API void LIBT_PRINT_WARNING(const Lib_String& strText);
LIB_API void LIBT_PRINT_TIME();
LIB_API void LIBT_PRINT_TIME(const Lib_String& strCaption);
LIB_API void LIBT_PRINT_THREAD_INFO(bool bValue);

LIB_API void libtEnter_Function(const Lib_String& strFirst, const Lib_String& strSecond);
LIB_API void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond);
LIB_API void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond,
                                unsigned int dwResult);
LIB_API void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond, long long nResult);
/// For a DWORD of Windows.
inline void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond,
                               unsigned long dwResult)
{
    libtLeave_Function(strFirst, strSecond, static_cast<unsigned int>(dwResult));
}
LIB_API void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond, int nResult,
                                Lib_Result* pResult);
LIB_API void libtLeave_Function(const Lib_String& strFirst, const Lib_String& strSecond, bool bResult,
                                Lib_Result* pResult);

/// The file name of a module, for trace points. Silent as they are: an empty string for every handle, which
/// is not looked at.
LIB_API Lib_String libtGet_Module_Name_With_Extension(HINSTANCE hModule);

#endif
