# `cpack -G DEB` makes the Debian packages, `cpack -G RPM` those for the family of Red Hat, `cpack -G TGZ`
# archives of the same. family.cmake has what is one family's own, arrange.cmake makes of the installed
# files what that family wants in a package, seal.cmake the same bytes of the same files.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qor)
set(CPACK_PACKAGE_VENDOR qor)
set(CPACK_PACKAGE_CONTACT "qor maintainers <qor@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_COMPONENTS_ALL qor qor-monitoring qorsim qor-dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_SOURCE_DIR}/family.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/arrange.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/seal.cmake)

# For these two.
set(CPACK_QOR_FOLDER ${CMAKE_CURRENT_SOURCE_DIR})
set(CPACK_QOR_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(CPACK_QOR_LIBRARIES ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_QOR_OBJCOPY ${CMAKE_OBJCOPY})
# Of another processor than this machine's.
if(CMAKE_CROSSCOMPILING)
  set(CPACK_QOR_PROCESSOR ${CMAKE_SYSTEM_PROCESSOR})
endif()
include(CPack)
