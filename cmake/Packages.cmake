# Debian packages, one a component. `cpack` in a build configured by the preset "package" makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME configstorectl)
# Each package's description has a first line of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "libconfigstorectl developers <maintainers@configstorectl.example>")
set(CPACK_COMPONENTS_ALL libraries development programs)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebianTree.cmake)
set(CPACK_CONFIGSTORECTL_SOURCE_DIR ${PROJECT_SOURCE_DIR})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR} ${PROJECT_BINARY_DIR}/host)
set(same_version "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME libconfigstorectl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION "control library of a hypervisor host's configuration store
Brings the databases of a host's configuration store into service at boot,
registers the schemas of the installed packages, validates and stages desired
configuration and reads the host's image database.

With it comes libnimbhost, the platform libraries for an ordinary Linux host.")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libconfigstorectl-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME} ${same_version}, rapidjson-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "control library of a host's configuration store (development files)
Headers, a CMake package, a pkg-config file, the manual of the library and an
example of a program that uses it.")

set(CPACK_DEBIAN_PROGRAMS_PACKAGE_NAME configstorectl)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PROGRAMS_PACKAGE_DEPENDS "${CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME} ${same_version}")
set(CPACK_DEBIAN_PROGRAMS_DESCRIPTION "command line of a hypervisor host's configuration store
Every operation of the control library as a command, a shell over the kernel's
information, systemd units that load the store at boot, the manual, and a
sample host to try it all on.")

# What links with the libraries depends on this version of their package or a later one.
file(CONFIGURE OUTPUT debian/shlibs @ONLY CONTENT
  "libconfigstorectl @PROJECT_VERSION_MAJOR@ libconfigstorectl@PROJECT_VERSION_MAJOR@ (>= @PROJECT_VERSION@)
libnimbhost @PROJECT_VERSION_MAJOR@ libconfigstorectl@PROJECT_VERSION_MAJOR@ (>= @PROJECT_VERSION@)
")
file(CONFIGURE OUTPUT debian/triggers CONTENT "activate-noawait ldconfig\n")
include(CPack)
