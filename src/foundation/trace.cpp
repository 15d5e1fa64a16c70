#include "foundation/trace.h"

void LIBT_PRINT_BOOL(int&) {}
void LIBT_PRINT_BOOL(const Lib_String&, int&) {}
void LIBT_PRINT_bool(bool&) {}
void LIBT_PRINT_bool(const Lib_String&, bool&) {}
void LIBT_PRINT_BYTE(unsigned char) {}
void LIBT_PRINT_BYTE(const Lib_String&, unsigned char) {}
void LIBT_PRINT_DWORD(unsigned int) {}
void LIBT_PRINT_DWORD(const Lib_String&, unsigned int) {}
void LIBT_PRINT_PTR(const Lib_String&, void*) {}
void LIBT_PRINT_BUFFER(const Lib_Buffer&) {}
void LIBT_PRINT_BUFFER(const Lib_String&, const Lib_Buffer&) {}
void LIBT_PRINT_BUFFER(const unsigned char*, unsigned int) {}
void LIBT_PRINT_BUFFER(const Lib_String&, const unsigned char*, unsigned int) {}
void LIBT_PRINT_BUFFER_AS_STRING_A(const unsigned char*, unsigned int) {}
void LIBT_PRINT_BUFFER_AS_STRING_A(const Lib_String&, const unsigned char*, unsigned int) {}
void LIBT_PRINT_BUFFER_AS_STRING_W(const unsigned char*, unsigned int) {}
void LIBT_PRINT_BUFFER_AS_STRING_W(const Lib_String&, const unsigned char*, unsigned int) {}
void LIBT_PRINT_STRING(const Lib_String&) {}
void LIBT_PRINT_STRING(const Lib_String&, const Lib_String&) {}
void LIBT_PRINT_RES(const Lib_Result&) {}
void LIBT_PRINT_RES(const Lib_String&, const Lib_Result&) {}
void LIBT_PRINT_ERROR(const Lib_String&) {}
void LIBT_PRINT_ERROR(const Lib_String&, const Lib_Result&) {}
void LIBT_PRINT_WARNING(const Lib_String&) {}
void LIBT_PRINT_TIME() {}
void LIBT_PRINT_TIME(const Lib_String&) {}
void LIBT_PRINT_THREAD_INFO(bool) {}
void libtEnter_Function(const Lib_String&, const Lib_String&) {}
void libtLeave_Function(const Lib_String&, const Lib_String&) {}
void libtLeave_Function(const Lib_String&, const Lib_String&, unsigned int) {}
void libtLeave_Function(const Lib_String&, const Lib_String&, long long) {}
void libtLeave_Function(const Lib_String&, const Lib_String&, int, Lib_Result*) {}
void libtLeave_Function(const Lib_String&, const Lib_String&, bool, Lib_Result*) {}

Lib_String libtGet_Module_Name_With_Extension(HINSTANCE) { return Lib_String(); }
