# Installs the package into the build folder and builds client/ against it, once with find_package and once
# with pkg-config alone.
set(prefix "${CMAKE_BINARY_DIR}/package/prefix")
set(client "${CMAKE_CURRENT_LIST_DIR}/client")

add_test(NAME package/install
         COMMAND "${CMAKE_COMMAND}" --install "${CMAKE_BINARY_DIR}" --prefix "${prefix}")
set_tests_properties(package/install PROPERTIES FIXTURES_SETUP qnlib_package LABELS package)

add_test(NAME package/find_package
         COMMAND "${CMAKE_CTEST_COMMAND}" --build-and-test "${client}" "${CMAKE_BINARY_DIR}/package/client"
                 --build-generator "${CMAKE_GENERATOR}" --build-noclean
                 --build-options "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}"
                 --test-command client)
set_tests_properties(package/find_package PROPERTIES FIXTURES_REQUIRED qnlib_package LABELS package
                     PASS_REGULAR_EXPRESSION "card 0001, 5 letters")

# An installed tree that was moved finds its providers where it is now.
set(moved "${CMAKE_BINARY_DIR}/package/moved")
add_test(NAME package/move COMMAND "${CMAKE_COMMAND}" -E copy_directory "${prefix}" "${moved}")
set_tests_properties(package/move PROPERTIES FIXTURES_REQUIRED qnlib_package FIXTURES_SETUP qnlib_moved LABELS package)
set_tests_properties(package/find_package PROPERTIES FIXTURES_SETUP qnlib_client)
add_test(NAME package/moved COMMAND "${CMAKE_BINARY_DIR}/package/client/client")
set_tests_properties(package/moved PROPERTIES LABELS package FIXTURES_REQUIRED "qnlib_moved;qnlib_client"
                     ENVIRONMENT "LD_LIBRARY_PATH=${moved}/${CMAKE_INSTALL_LIBDIR}"
                     PASS_REGULAR_EXPRESSION "crypt32 is [^ ]*package.moved.[^ ]*qnLib.crypt32.so")

find_program(QNLIB_PKG_CONFIG NAMES pkg-config pkgconf)
mark_as_advanced(QNLIB_PKG_CONFIG)
if(QNLIB_PKG_CONFIG)
    add_test(NAME package/pkg_config
             COMMAND sh "${CMAKE_CURRENT_LIST_DIR}/pkg_config.sh" "${QNLIB_PKG_CONFIG}" "${CMAKE_CXX_COMPILER}"
                     "${prefix}/${CMAKE_INSTALL_LIBDIR}" "${client}/client.cpp" "${CMAKE_BINARY_DIR}/package")
    set_tests_properties(package/pkg_config PROPERTIES FIXTURES_REQUIRED qnlib_package LABELS package
                         PASS_REGULAR_EXPRESSION "card 0001, 5 letters")
endif()
