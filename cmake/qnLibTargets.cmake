# Functions by which the library and the programs around it are declared.

# What every translation unit of this project is compiled with, and what its clients need on Linux:
# wchar_t of 16 bits.
function(qnlib_compile_settings target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(NOT WIN32)
        target_compile_options(${target} PUBLIC -fshort-wchar)
    endif()
    if(QNLIB_SANITIZERS)
        target_compile_options(${target} PRIVATE -fsanitize=${QNLIB_SANITIZERS} -fno-sanitize-recover=all
                               -fno-omit-frame-pointer)
        target_link_options(${target} PUBLIC $<BUILD_INTERFACE:-fsanitize=${QNLIB_SANITIZERS}>)
    endif()
endfunction()

# Collects the sources for the target system into `out`: src/platform/windows/ is all of src/platform/ that
# Windows takes. Linux leaves that out, and src/platform/providers/, whose parts are modules of their own.
function(qnlib_collect_sources out)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/*.cpp")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/*.h"
         "${PROJECT_SOURCE_DIR}/src/*.h")
    set(windows_layer ${sources})
    list(FILTER windows_layer INCLUDE REGEX "/src/platform/windows/")
    if(WIN32)
        list(FILTER sources EXCLUDE REGEX "/src/platform/")
        list(APPEND sources ${windows_layer})
    else()
        list(FILTER sources EXCLUDE REGEX "/src/platform/(windows|providers)/")
    endif()
    if(NOT QNLIB_HAS_AVX2_KERNELS)
        list(FILTER sources EXCLUDE REGEX "_avx2\\.cpp$")
    endif()
    foreach(source IN LISTS sources)
        if(source MATCHES "_avx2\\.cpp$")
            set_property(SOURCE "${source}" DIRECTORY "${PROJECT_SOURCE_DIR}"
                         PROPERTY COMPILE_OPTIONS -mavx2 -O3)
        elseif(source MATCHES "_kernels[^/]*\\.cpp$")
            set_property(SOURCE "${source}" DIRECTORY "${PROJECT_SOURCE_DIR}" PROPERTY COMPILE_OPTIONS -O3)
        endif()
    endforeach()
    set(${out} ${sources} ${headers} PARENT_SCOPE)
endfunction()

# One compilation of the library's sources, as an object library.
function(qnlib_add_objects target)
    add_library(${target} OBJECT ${QNLIB_SOURCES})
    qnlib_compile_settings(${target})
    qnlib_include_directories(${target})
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/src")
    target_compile_definitions(${target} PRIVATE QNLIB_BUILDING)
    set_target_properties(${target} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(QNLIB_HAS_AVX2_KERNELS)
        target_compile_definitions(${target} PRIVATE QNLIB_AVX2_KERNELS)
    endif()
    if(NOT WIN32)
        # An exported function that the library itself calls is called directly, not through the PLT.
        target_compile_options(${target} PRIVATE -fno-semantic-interposition)
        # The few bytes that a thread has of its own are there from its start: getting them never allocates.
        target_compile_options(${target} PRIVATE -ftls-model=initial-exec)
    endif()
endfunction()

function(qnlib_include_directories target)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/generated>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qnLib>)
endfunction()

# What a client of the library inherits, whichever way it is linked.
function(qnlib_client_interface target)
    qnlib_compile_settings(${target})
    qnlib_include_directories(${target})
    if(WIN32)
        # oleaut32 is there from the start: the stubs for a first use lose arguments that are doubles.
        target_link_libraries(${target} PRIVATE user32 advapi32 shell32 ole32 oleaut32)
        qnlib_link_at_first_use(${target} crypt32)
    endif()
endfunction()

# Links a module of Windows that is loaded when one of its functions, which cmake/<module>.def lists, is called
# for the first time: a process that never does so does not have it.
function(qnlib_link_at_first_use target module)
    set(definition "${PROJECT_SOURCE_DIR}/cmake/${module}.def")
    set(library "${PROJECT_BINARY_DIR}/generated/lib${module}_at_first_use.a")
    set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${definition}")
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/generated")
    execute_process(COMMAND "${CMAKE_DLLTOOL}" --input-def "${definition}" --output-delaylib "${library}"
                    COMMAND_ERROR_IS_FATAL ANY)
    target_link_libraries(${target} PRIVATE "${library}")
endfunction()

# qnLib, the module that is installed, and qnLib_static, which only tests and fuzz targets link: they reach
# what the module hides, and replace the global allocator beneath it.
function(qnlib_add_library)
    if(NOT WIN32 AND CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
        set(QNLIB_HAS_AVX2_KERNELS ON)
    else()
        set(QNLIB_HAS_AVX2_KERNELS OFF)
    endif()
    qnlib_collect_sources(QNLIB_SOURCES)
    configure_file("${PROJECT_SOURCE_DIR}/cmake/lib_version.h.in"
                   "${PROJECT_BINARY_DIR}/generated/lib_version.h" @ONLY)

    qnlib_add_objects(qnLib_objects)
    add_library(qnLib SHARED $<TARGET_OBJECTS:qnLib_objects>)
    add_library(qnLib::qnLib ALIAS qnLib)
    qnlib_client_interface(qnLib)
    set_target_properties(qnLib PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                          LINKER_LANGUAGE CXX)

    if(WIN32)
        # dllexport and a static build exclude each other, so Windows compiles the sources a second time.
        set_target_properties(qnLib PROPERTIES PREFIX "" SOVERSION "" VERSION "")
        qnlib_add_objects(qnLib_static_objects)
        target_compile_definitions(qnLib_static_objects PRIVATE QNLIB_STATIC)
        add_library(qnLib_static STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:qnLib_static_objects>)
        set_target_properties(qnLib_static_objects PROPERTIES EXCLUDE_FROM_ALL ON)
    else()
        # Threads that the layer did not make end in its code, so the module stays once it is loaded.
        target_link_options(qnLib PRIVATE -Wl,--as-needed -Wl,-Bsymbolic-functions -Wl,-z,nodelete
                            "-Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map")
        set_property(TARGET qnLib APPEND PROPERTY LINK_DEPENDS "${PROJECT_SOURCE_DIR}/cmake/exports.map")
        if(NOT QNLIB_SANITIZERS)
            target_link_options(qnLib PRIVATE -Wl,-z,defs) # a sanitizer's runtime may come with the program
        endif()
        add_library(qnLib_static STATIC EXCLUDE_FROM_ALL $<TARGET_OBJECTS:qnLib_objects>)
    endif()
    qnlib_client_interface(qnLib_static)
    target_compile_definitions(qnLib_static PUBLIC QNLIB_STATIC)
    set_target_properties(qnLib_static PROPERTIES LINKER_LANGUAGE CXX)
endfunction()

# Declares a provider, a module with third-party parts that the platform layer loads at first use:
#     qnlib_add_provider(crypt32 PACKAGE OpenSSL DEBIAN libssl-dev LIBRARIES OpenSSL::Crypto)
# Its sources are those of src/platform/providers/<name>/ unless SOURCES names them. It lies in the folder qnLib/
# beside libqnLib.so, in the build tree as in the installed one. PACKAGE (with COMPONENTS) is what find_package
# looks for; DEBIAN tells what to install if it is missing. A provider marked TEST is not installed. Linux only.
function(qnlib_add_provider name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "TEST" "PACKAGE;DEBIAN" "COMPONENTS;LIBRARIES;SOURCES")
    if(arg_PACKAGE)
        find_package(${arg_PACKAGE} QUIET COMPONENTS ${arg_COMPONENTS})
        if(NOT ${arg_PACKAGE}_FOUND)
            message(FATAL_ERROR "The provider ${name} needs ${arg_PACKAGE}: install the package ${arg_DEBIAN}.")
        endif()
    endif()
    if(NOT arg_SOURCES)
        file(GLOB_RECURSE arg_SOURCES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/platform/providers/${name}/*.cpp")
    endif()
    set(target qnLib_provider_${name})
    add_library(${target} MODULE ${arg_SOURCES} "${PROJECT_SOURCE_DIR}/src/platform/providers/common/last_error.cpp")
    qnlib_compile_settings(${target})
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/include" "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES})
    set_target_properties(${target} PROPERTIES
        PREFIX "" OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/qnLib"
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    set(map "${PROJECT_SOURCE_DIR}/cmake/provider.map")
    target_link_options(${target} PRIVATE -Wl,--as-needed "-Wl,--version-script=${map}")
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${map}")
    if(NOT QNLIB_SANITIZERS)
        target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
    add_dependencies(qnLib ${target})
    add_dependencies(qnLib_static ${target})
    if(NOT arg_TEST)
        install(TARGETS ${target} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}/qnLib")
    endif()
endfunction()

# Programs with the static library look for providers beside themselves: shows them the build's in their folder.
function(qnlib_show_providers folder)
    if(NOT WIN32)
        file(MAKE_DIRECTORY "${folder}")
        file(CREATE_LINK "${PROJECT_BINARY_DIR}/qnLib" "${folder}/qnLib" SYMBOLIC)
    endif()
endfunction()

# The C++ runtime is shared between qnLib.dll and the programs, since exceptions cross the boundary.
function(qnlib_copy_runtime_dlls folder)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=${name}
                        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT IS_ABSOLUTE "${path}")
            execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-sysroot
                            OUTPUT_VARIABLE sysroot OUTPUT_STRIP_TRAILING_WHITESPACE)
            unset(found CACHE)
            find_file(found ${name} PATHS ${CMAKE_FIND_ROOT_PATH} "${sysroot}"
                      PATH_SUFFIXES lib bin NO_CACHE NO_CMAKE_FIND_ROOT_PATH)
            set(path "${found}")
        endif()
        if(EXISTS "${path}")
            file(COPY "${path}" DESTINATION "${folder}")
        endif()
    endforeach()
endfunction()
