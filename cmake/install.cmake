# Install rules, included by the top-level CMakeLists.txt.
#
# Components (cmake --install BUILD --component NAME):
#   runtime  the shared libraries with their versioned names: what a router
#            image carries
#   dev      headers (include/cmdlib/), the unversioned .so links, the static
#            archives, cmdlib.pc and the CMake package
#   tools    cmdlibctl
# Without --component everything is installed.  The device, its simulators,
# tests and benchmarks are never installed.
include(CMakePackageConfigHelpers)

set(CMDLIB_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/cmdlib)

install(TARGETS cmdlib base EXPORT cmdlibTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(TARGETS cmdlib_static base_static EXPORT cmdlibTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(FILES ${BASE_HEADERS} ${CMDLIB_HEADERS} ${UMBRELLA}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cmdlib COMPONENT dev)
install(TARGETS cmdlibctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

# CMake package: find_package(cmdlib CONFIG) gives cmdlib::cmdlib (which
# brings cmdlib::base), cmdlib::base, and the static cmdlib::cmdlib_static
# and cmdlib::base_static.
install(EXPORT cmdlibTargets NAMESPACE cmdlib:: DESTINATION ${CMDLIB_CMAKE_DIR} COMPONENT dev)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/cmdlibConfig.cmake.in
                              ${CMAKE_CURRENT_BINARY_DIR}/cmdlibConfig.cmake
                              INSTALL_DESTINATION ${CMDLIB_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/cmdlibConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/cmdlibConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/cmdlibConfigVersion.cmake
        DESTINATION ${CMDLIB_CMAKE_DIR} COMPONENT dev)

# pkg-config: cmdlib.pc.  Requires.private lists the private packages;
# Libs.private the C++ runtime (CMDLIB_CXX_RUNTIME).
set(CMDLIB_PC_REQUIRES_PRIVATE)
foreach(dep IN LISTS CMDLIB_PRIVATE_PACKAGES)
  string(REGEX REPLACE "^[^:]*:" "" module ${dep})
  list(APPEND CMDLIB_PC_REQUIRES_PRIVATE ${module})
endforeach()
list(JOIN CMDLIB_PC_REQUIRES_PRIVATE " " CMDLIB_PC_REQUIRES_PRIVATE)
list(TRANSFORM CMDLIB_CXX_RUNTIME PREPEND -l OUTPUT_VARIABLE CMDLIB_PC_LIBS_PRIVATE)
list(JOIN CMDLIB_PC_LIBS_PRIVATE " " CMDLIB_PC_LIBS_PRIVATE)
# The prefix is the one given at install time (cmake --install --prefix P),
# so the file is completed by the install step; everything else now.
set(CMDLIB_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(CMDLIB_PC_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(CMDLIB_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(CMDLIB_PC_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
else()
  set(CMDLIB_PC_INSTALL_DIR "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/cmdlib.pc.in ${CMAKE_CURRENT_BINARY_DIR}/cmdlib.pc.in @ONLY)
install(CODE "
  configure_file(\"${CMAKE_CURRENT_BINARY_DIR}/cmdlib.pc.in\" \"${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/cmdlib.pc\" @ONLY)
  file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/cmdlib.pc\"
       DESTINATION \"${CMDLIB_PC_INSTALL_DIR}\")
" COMPONENT dev)
