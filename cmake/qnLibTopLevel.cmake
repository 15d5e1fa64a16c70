# Settings of a build of this project itself; a project that adds qnLib as a subdirectory keeps its own.

set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# CMake's default for Release is -O3 with g++. The kernels that gain from -O3 ask for it by file name.
if(CMAKE_CXX_FLAGS_RELEASE STREQUAL "-O3 -DNDEBUG")
    set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
endif()

find_program(QNLIB_CCACHE ccache)
mark_as_advanced(QNLIB_CCACHE)
if(QNLIB_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${QNLIB_CCACHE}")
endif()

if(WIN32)
    # Programs find qnLib.dll and the runtime's DLLs in their own folder.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
    qnlib_copy_runtime_dlls("${CMAKE_BINARY_DIR}/bin")
endif()
