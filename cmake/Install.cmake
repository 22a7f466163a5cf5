# The installed tree: both libraries, the program, the public headers with those platform headers that they and a port
# to another host need, and a pkg-config file.
set(INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/configstorectl)
file(GLOB PUBLIC_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/*.h ${PROJECT_SOURCE_DIR}/platform/*.h)

install(TARGETS configstorectl nimbhost LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET configstorectl_program)
  install(TARGETS configstorectl_program RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # Found wherever the tree is installed.
  set_target_properties(configstorectl_program PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
set_target_properties(configstorectl PROPERTIES INSTALL_RPATH "$ORIGIN")
install(FILES ${PUBLIC_HEADERS} DESTINATION ${INSTALL_HEADERS})

# Relative to where the file itself lies, so that the installed tree can be moved.
file(RELATIVE_PATH PKGCONFIG_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/packaging/configstorectl.pc.in ${PROJECT_BINARY_DIR}/configstorectl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/configstorectl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
