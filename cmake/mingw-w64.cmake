# Toolchain file of the second target: 64-bit Windows by MinGW-w64 (posix threads), programs run by Wine.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(prefix x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER ${prefix}-g++-posix)
set(CMAKE_RC_COMPILER ${prefix}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${prefix})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ./dev windows-test passes the loader; Debian's package keeps it off the PATH.
if(QNLIB_WINE_LOADER)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/run_in_wine.sh;${QNLIB_WINE_LOADER}")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QNLIB_WINE_LOADER)
