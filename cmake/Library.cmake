# libconfigstorectl: the library storey. Its include path holds the platform's interfaces and its own folders, and
# deliberately not host/.
set(LIBRARY_FOLDERS configstore desired schema image errors apps/zelsh)
set(LIBRARY_SOURCES "")
foreach(folder IN LISTS LIBRARY_FOLDERS)
  file(GLOB folder_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
  list(APPEND LIBRARY_SOURCES ${folder_sources})
endforeach()

add_library(configstorectl_objects OBJECT ${LIBRARY_SOURCES})
target_include_directories(configstorectl_objects PUBLIC ${LIBRARY_FOLDERS} PRIVATE apps/common)
target_link_libraries(configstorectl_objects PUBLIC platform nimbhost PRIVATE PkgConfig::LIBXML2)

add_library(configstorectl SHARED $<TARGET_OBJECTS:configstorectl_objects>)
set_target_properties(configstorectl PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
target_link_libraries(configstorectl PUBLIC nimbhost PRIVATE PkgConfig::LIBXML2)
target_link_options(configstorectl PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/configstorectl.map)
set_property(TARGET configstorectl APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/configstorectl.map)
