# Tests of what the build hands to others, run on the build machine: the
# installed package as a consumer uses it, and the ABI of the shared
# libraries against the committed description in abi/.  Both need the plain
# libraries (a sanitized or fuzz build links its runtime into every user).
if(NOT CMDLIB_SANITIZE AND NOT CMDLIB_BUILD_FUZZ)
  add_test(NAME package.install
           COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tests/package/install_test.sh ${CMAKE_BINARY_DIR})
  set_tests_properties(package.install PROPERTIES TIMEOUT 300)
  find_program(CMDLIB_ABIDIFF abidiff)
  if(CMDLIB_ABIDIFF)
    # The guard's own rules, on a sample library with planted changes.
    add_test(NAME abi.guard COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/tests/abi/guard_test.sh)
    # The description is made from RelWithDebInfo builds (DWARF, optimised).
    if(CMAKE_BUILD_TYPE STREQUAL "RelWithDebInfo")
      add_test(NAME abi.libraries
               COMMAND bash ${CMAKE_CURRENT_SOURCE_DIR}/scripts/check-abi.sh ${CMAKE_BINARY_DIR})
    endif()
  endif()
endif()
