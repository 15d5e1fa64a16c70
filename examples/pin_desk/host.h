#ifndef PIN_DESK_HOST_H
#define PIN_DESK_HOST_H

#include <cstdio>
#include <lib_platform.h>
#include <lib_strings.h>

// Where the systems differ: main_linux.cpp and main_windows.cpp each have their own main function and their
// own of the functions below, and the build takes one of them.

/// The whole program on a command line of 16-bit text; the result is the exit code.
int Run_Pin_Desk(int nArguments, wchar_t** ppArguments);

/// Opens a file, whose path is not empty, for binary reading; null when that fails, with the reason in errno.
/// The caller closes it.
std::FILE* Open_For_Reading(const Lib_String& strPath);

/// Waits for bytes of a file that was opened there and takes as many as there are, at most nRoom: 0 at the
/// end, and when a stop signal has come (on Windows when the next bytes have come as well), -1 when it cannot
/// be read, with the reason in errno.
long long Read_Bytes(std::FILE* pFile, char* pBytes, std::size_t nRoom);

/// Opens a file by its path in the platform's form, with backslashes, for reading and appending bytes, and
/// makes it, for the user alone, where it is missing (on Windows with the rights that are inherited). Null
/// when that fails. The caller closes it.
std::FILE* Open_For_Appending(const Lib_String& strPath);

/// For a std::unique_ptr.
struct Close_File
{
    void operator()(std::FILE* pFile) const { std::fclose(pFile); }
};

/// A token by which threads impersonate a session, for the caller to close; null with the platform's last
/// error when there is none to be had.
HANDLE Make_Session_Token(unsigned int nSession);

#endif
