# Run by CPack between installing into its folders and building the packages: makes each tree a Debian package's, with
# compressed manual pages, a changelog and the copyright.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(usr ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
  set(doc ${usr}/share/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  configure_file(${CPACK_CONFIGSTORECTL_SOURCE_DIR}/packaging/debian/copyright ${doc}/copyright COPYONLY)
  configure_file(${CPACK_CONFIGSTORECTL_SOURCE_DIR}/packaging/debian/changelog ${doc}/changelog.Debian COPYONLY)
  configure_file(${CPACK_CONFIGSTORECTL_SOURCE_DIR}/CHANGELOG.md ${doc}/changelog COPYONLY)
  file(REMOVE ${usr}/share/doc/configstorectl/LICENSE ${usr}/share/doc/configstorectl/CHANGELOG.md)
  file(GLOB texts ${usr}/share/man/*/*.[1-8] ${doc}/changelog ${doc}/changelog.Debian)
  execute_process(COMMAND gzip -9n ${texts} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
