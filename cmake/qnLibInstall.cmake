# The installed package: headers, module, CMake package and qnlib.pc. Both of the latter carry the flag for a
# 16-bit wchar_t.

include(CMakePackageConfigHelpers)

set(QNLIB_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/qnLib")

install(TARGETS qnLib EXPORT qnLibTargets
        RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
        LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qnLib"
        FILES_MATCHING PATTERN "*.h" PATTERN "*.inl")
install(FILES "${PROJECT_BINARY_DIR}/generated/lib_version.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/qnLib")
install(EXPORT qnLibTargets NAMESPACE qnLib:: DESTINATION "${QNLIB_PACKAGE_DIR}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/qnLibConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/generated/qnLibConfig.cmake"
                              INSTALL_DESTINATION "${QNLIB_PACKAGE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/generated/qnLibConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/generated/qnLibConfig.cmake"
              "${PROJECT_BINARY_DIR}/generated/qnLibConfigVersion.cmake"
        DESTINATION "${QNLIB_PACKAGE_DIR}")

if(NOT WIN32)
    # ${pcfiledir} lets the installed tree be moved; the way up is as long as the way down was.
    file(RELATIVE_PATH QNLIB_PC_PREFIX "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/qnlib.pc.in" "${PROJECT_BINARY_DIR}/generated/qnlib.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/generated/qnlib.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()
