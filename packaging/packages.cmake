# `cpack -G DEB` makes the Debian packages, `cpack -G TGZ` the same as archives.
set(CPACK_PACKAGE_NAME qor)
set(CPACK_PACKAGE_VENDOR qor)
set(CPACK_PACKAGE_CONTACT "qor maintainers <qor@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL qor qorsim qor-dev)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The libraries of a build are found where they are built, not in a package.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(CPACK_DEBIAN_QOR_PACKAGE_NAME qor)
set(CPACK_DEBIAN_QORSIM_PACKAGE_NAME qorsim)
set(CPACK_DEBIAN_QORSIM_PACKAGE_DEPENDS "qor (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_QOR-DEV_PACKAGE_NAME qor-dev)
set(CPACK_DEBIAN_QOR-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_QOR-DEV_PACKAGE_DEPENDS "qor (= ${PROJECT_VERSION})")

set(CPACK_COMPONENT_QOR_DESCRIPTION
  "RAID information plug-in for management servers\n The plug-in, its common library and qorctl.")
set(CPACK_COMPONENT_QORSIM_DESCRIPTION
  "Simulated server for the RAID information plug-in\n Stand-ins of the RAID tools.")
set(CPACK_COMPONENT_QOR-DEV_DESCRIPTION
  "Headers for hosts of the RAID information plug-in\n CMake package and pkg-config file.")
include(CPack)
cpack_add_component_group(qor)
cpack_add_component_group(qorsim)
cpack_add_component_group(qor-dev)
cpack_add_component(qor GROUP qor)
cpack_add_component(qorsim GROUP qorsim)
cpack_add_component(qor-dev GROUP qor-dev)
