# Tests of what the build hands to others, run on the build machine: the
# installed package as a consumer uses it.  It needs the plain libraries (a
# sanitized or fuzz build links its runtime into every user).
if(NOT CMDLIB_SANITIZE AND NOT CMDLIB_BUILD_FUZZ)
  add_test(NAME package.install
           COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tests/package/install_test.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(package.install PROPERTIES TIMEOUT 300)
endif()
