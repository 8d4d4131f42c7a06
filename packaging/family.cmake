# What one family of packages has of its own. cpack reads this before it makes the packages of each.
cmake_policy(VERSION 3.25)
set(version ${CPACK_PACKAGE_VERSION})
file(STRINGS ${CPACK_QOR_FOLDER}/licence.txt licence_name LIMIT_COUNT 1)

# The same files make the same packages, whenever: the time in them is that of the last commit, or,
# where there is no repository, of the changelog.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND git -c safe.directory=* -C ${CPACK_QOR_FOLDER} log -1 --format=%ct
    OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT epoch)
    file(TIMESTAMP ${CPACK_QOR_FOLDER}/../CHANGELOG.md epoch "%s" UTC)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${epoch})
endif()

# The components are called as the Debian packages; but qor-dbgsym is what CPack calls a folder of its
# own that it removes.
set(qor-symbols_debian qor-dbgsym)
set(qorsim_rpm qor-simulator)
set(qor-dev_rpm qor-devel)
set(qor-symbols_rpm qor-debuginfo)

set(qor_summary "RAID information plug-in for management servers")
set(qor_text
  "Tells a management server of RAID controllers, logical and physical drives"
  "with SMART data, and PCIe SSDs, as the RAID tool krzcli sees them. This"
  "package has the plug-in with its common library, and qorctl, which shows the"
  "same to people and scripts.")
set(qor-monitoring_summary "Metrics, events and checks of RAID storage")
set(qor-monitoring_text
  "Units for systemd that write metrics for a Prometheus node exporter and pass"
  "on events, both off at first. Alerting rules, a dashboard for Grafana, and"
  "examples for Nagios, NRPE, Icinga and sudo.")
set(qorsim_summary "Simulated server for the RAID information plug-in")
set(qorsim_text
  "Runs a command on a server with RAID controllers that are not there: the RAID"
  "tools and the devices are stand-ins, and the machine itself stays as it is."
  "For trying, teaching and testing.")
set(qor-dev_summary "Headers for hosts of the RAID information plug-in")
set(qor-dev_text
  "For those who build management servers that load the plug-in: headers, files"
  "for CMake and pkg-config, and an example.")
set(qor-symbols_summary "Debug symbols for qor and qorsim")
set(qor-symbols_text
  "What debuggers need to name functions and lines in the plug-in, its common"
  "library and the programs.")

if(CPACK_GENERATOR STREQUAL "TGZ")
  set(CPACK_STRIP_FILES ON)
else()
  # arrange.cmake splits the debug symbols off.
  list(APPEND CPACK_COMPONENTS_ALL qor-symbols)
endif()

if(CPACK_GENERATOR STREQUAL "DEB")
  # dpkg-shlibdeps would ask for the packages of the cross compiler.
  if(CPACK_QOR_PROCESSOR)
    message(FATAL_ERROR "Debian packages for ${CPACK_QOR_PROCESSOR} have to be made there.")
  endif()
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  # seal.cmake packs anew what CPack has packed.
  set(compression xz)
  if(CPACK_DEBIAN_COMPRESSION_TYPE)
    set(compression ${CPACK_DEBIAN_COMPRESSION_TYPE})
  endif()
  set(CPACK_DEBIAN_COMPRESSION_TYPE none)
  set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
  # Each package has a line of its own; CPack would put this one above all of them.
  unset(CPACK_PACKAGE_DESCRIPTION_SUMMARY)
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    if(NOT ${component}_debian)
      set(${component}_debian ${component})
    endif()
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${${component}_debian})
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION admin)
    list(JOIN ${component}_text "\n" text)
    set(CPACK_COMPONENT_${key}_DESCRIPTION "${${component}_summary}\n${text}")
    file(GLOB CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${CPACK_QOR_FOLDER}/debian/${component}/*)
  endforeach()
  # The libraries of a build are found where they are built, not in a package.
  foreach(key IN ITEMS QOR QORSIM)
    set(CPACK_DEBIAN_${key}_PACKAGE_SHLIBDEPS ON)
  endforeach()
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CPACK_QOR_LIBRARIES})
  set(CPACK_DEBIAN_QORSIM_PACKAGE_DEPENDS "qor (= ${version})")
  set(CPACK_DEBIAN_QOR-MONITORING_PACKAGE_ARCHITECTURE all)
  set(CPACK_DEBIAN_QOR-MONITORING_PACKAGE_DEPENDS "qor (>= ${version})")
  set(CPACK_DEBIAN_QOR-MONITORING_PACKAGE_SUGGESTS
    "prometheus-node-exporter, nagios-nrpe-server, icinga2-bin, sudo, curl, default-mta | mail-transport-agent")
  # Until 0.1.0, qor had its files.
  set(CPACK_DEBIAN_QOR-MONITORING_PACKAGE_BREAKS "qor (<= 0.1.0)")
  set(CPACK_DEBIAN_QOR-MONITORING_PACKAGE_REPLACES "qor (<= 0.1.0)")
  set(CPACK_DEBIAN_QOR-DEV_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_QOR-DEV_PACKAGE_DEPENDS "qor (= ${version})")
  set(CPACK_DEBIAN_QOR-SYMBOLS_PACKAGE_SECTION debug)
  set(CPACK_DEBIAN_QOR-SYMBOLS_PACKAGE_DEPENDS "qor (= ${version})")
endif()

if(CPACK_GENERATOR STREQUAL "RPM")
  set(CPACK_RPM_PACKAGE_LICENSE "${licence_name}")
  set(CPACK_RPM_PACKAGE_RELEASE 1)
  set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
  set(CPACK_RPM_MAIN_COMPONENT qor)
  # What is below /etc stays there, so that nothing may go elsewhere.
  set(CPACK_PACKAGE_RELOCATABLE OFF)
  if(CPACK_QOR_PROCESSOR)
    set(CPACK_RPM_PACKAGE_ARCHITECTURE ${CPACK_QOR_PROCESSOR})
  endif()
  # No time of its own and no machine's name; no links to build ids, which the debug symbols have; and
  # nobody is to need or to offer the libraries of a private folder. What can be stripped, is so.
  set(CPACK_RPM_SPEC_MORE_DEFINE
"%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1
%define _buildhost localhost
%define packager ${CPACK_PACKAGE_CONTACT}
%define _build_id_links none
%define debug_package %{nil}
%define __os_install_post %{nil}
%define __provides_exclude_from ^.*/qor/.*$
%define __requires_exclude ^libqor_.*$")
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    if(NOT ${component}_rpm)
      set(${component}_rpm ${component})
    endif()
    set(CPACK_RPM_${key}_PACKAGE_NAME ${${component}_rpm})
    set(CPACK_RPM_${key}_FILE_NAME RPM-DEFAULT)
    set(CPACK_RPM_${key}_PACKAGE_SUMMARY "${${component}_summary}")
    list(JOIN ${component}_text "\n" CPACK_RPM_${key}_PACKAGE_DESCRIPTION)
    set(CPACK_RPM_${key}_USER_FILELIST "%license /usr/share/licenses/${${component}_rpm}/copyright")
  endforeach()
  set(release ${version}-${CPACK_RPM_PACKAGE_RELEASE})
  set(CPACK_RPM_QORSIM_PACKAGE_REQUIRES "qor = ${release}")
  set(CPACK_RPM_QOR-MONITORING_PACKAGE_ARCHITECTURE noarch)
  set(CPACK_RPM_QOR-MONITORING_PACKAGE_REQUIRES "qor >= ${release}")
  set(CPACK_RPM_PACKAGE_GROUP Applications/System)
  set(CPACK_RPM_QOR-DEV_PACKAGE_GROUP Development/Libraries)
  set(CPACK_RPM_QOR-DEV_PACKAGE_REQUIRES "qor = ${release}")
  set(CPACK_RPM_QOR-SYMBOLS_PACKAGE_REQUIRES "qor = ${release}")
  list(APPEND CPACK_RPM_QOR-MONITORING_USER_FILELIST
    "%config(noreplace) /etc/default/qor" "%config(noreplace) /etc/qor/event"
    "%dir %attr(0700,root,root) /var/lib/qor")
  set(CPACK_RPM_QOR-MONITORING_POST_INSTALL_SCRIPT_FILE ${CPACK_QOR_FOLDER}/rpm/monitoring-post)
  set(CPACK_RPM_QOR-MONITORING_PRE_UNINSTALL_SCRIPT_FILE ${CPACK_QOR_FOLDER}/rpm/monitoring-preun)
  set(CPACK_RPM_QOR-MONITORING_POST_UNINSTALL_SCRIPT_FILE ${CPACK_QOR_FOLDER}/rpm/monitoring-postun)
  set(CPACK_RPM_QOR_POST_UNINSTALL_SCRIPT_FILE ${CPACK_QOR_FOLDER}/rpm/qor-postun)
  # Folders that others have, too.
  set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /etc/default /usr/lib/debug /usr/lib/debug/.build-id /usr/lib/systemd /usr/lib/systemd/system
    /usr/share/bash-completion /usr/share/bash-completion/completions /usr/share/fish
    /usr/share/fish/vendor_completions.d /usr/share/licenses /usr/share/man /usr/share/man/man1
    /usr/share/man/man7 /usr/share/zsh /usr/share/zsh/site-functions
    /usr/lib/cmake /usr/lib/pkgconfig /usr/lib64/cmake /usr/lib64/pkgconfig /var /var/lib)
endif()
