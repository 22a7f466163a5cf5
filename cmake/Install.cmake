# The installed tree, in three components: the libraries; what one needs to build on them (headers, a CMake package, a
# pkg-config file, the library's manual); and the programs with what a host needs around them.
set(INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/configstorectl)
set(INSTALL_CMAKE_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/configstorectl)
set(INSTALL_EXAMPLES ${CMAKE_INSTALL_DOCDIR}/examples)

# ---- libraries ------------------------------------------------------------------------------------------------------
install(TARGETS configstorectl nimbhost platform EXPORT configstorectlTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT libraries NAMELINK_COMPONENT development)

# ---- development ----------------------------------------------------------------------------------------------------
# The public headers, with those platform headers that they and a port to another host need.
file(GLOB PUBLIC_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/platform/*.h)
install(FILES ${PUBLIC_HEADERS} DESTINATION ${INSTALL_HEADERS} COMPONENT development)

include(CMakePackageConfigHelpers)
configure_package_config_file(packaging/configstorectlConfig.cmake.in ${PROJECT_BINARY_DIR}/configstorectlConfig.cmake
  INSTALL_DESTINATION ${INSTALL_CMAKE_PACKAGE} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/configstorectlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT configstorectlTargets NAMESPACE configstorectl:: DESTINATION ${INSTALL_CMAKE_PACKAGE}
  COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/configstorectlConfig.cmake ${PROJECT_BINARY_DIR}/configstorectlConfigVersion.cmake
  DESTINATION ${INSTALL_CMAKE_PACKAGE} COMPONENT development)

# Relative to where the file itself lies, so that the installed tree can be moved.
file(RELATIVE_PATH PKGCONFIG_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(packaging/configstorectl.pc.in configstorectl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/configstorectl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
install(DIRECTORY examples/consumer DESTINATION ${INSTALL_EXAMPLES} COMPONENT development)

# ---- programs -------------------------------------------------------------------------------------------------------
set(PROGRAMS configstorectl_program zelsh)
install(TARGETS ${PROGRAMS} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT programs)

file(GLOB UNITS CONFIGURE_DEPENDS packaging/*.service packaging/*.service.in)
foreach(unit IN LISTS UNITS)
  get_filename_component(name ${unit} NAME)
  string(REGEX REPLACE "\\.in$" "" name ${name})
  configure_file(${unit} units/${name} @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/units/${name} DESTINATION lib/systemd/system COMPONENT programs)
endforeach()

install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT programs)
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT programs
  FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN man EXCLUDE)
install(DIRECTORY examples/host DESTINATION ${INSTALL_EXAMPLES} COMPONENT programs PATTERN CMakeLists.txt EXCLUDE
  PATTERN demo.golden EXCLUDE)
install(PROGRAMS scripts/sample-host.sh DESTINATION ${INSTALL_EXAMPLES} COMPONENT programs)

# Found wherever the tree is installed; below /usr the system finds its libraries itself.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set_target_properties(${PROGRAMS} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(configstorectl PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()

# ---- manual and completion ------------------------------------------------------------------------------------------
foreach(section RANGE 1 8)
  file(GLOB PAGES CONFIGURE_DEPENDS docs/man/*.${section})
  set(component programs)
  if(section EQUAL 3 OR section EQUAL 7)
    set(component development)
  endif()
  install(FILES ${PAGES} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endforeach()

install(FILES ${PROJECT_BINARY_DIR}/man/configstorectl.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)

# Debian looks for the completion of packages in a folder of its own.
set(ZSH_FOLDER site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(ZSH_FOLDER vendor-completions)
endif()
file(GLOB BASH_COMPLETION CONFIGURE_DEPENDS packaging/completion/bash/*)
file(GLOB ZSH_COMPLETION CONFIGURE_DEPENDS packaging/completion/zsh/*)
install(FILES ${BASH_COMPLETION} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT programs)
install(FILES ${ZSH_COMPLETION} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${ZSH_FOLDER} COMPONENT programs)
