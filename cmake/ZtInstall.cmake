# SPDX-License-Identifier: Apache-2.0
# The install rules, in five components: `runtime` (the shared library and its helper programs),
# `development` (headers, the link libztportal.so, static library, CMake package, pkg-config file),
# `tools`, `python` (the Python package) and `documentation`. No installed file contains the installation
# prefix, so the installation can be moved.
#
# A project that adds this one to its build gets only the first component: its programs need that to
# run.

install(
  TARGETS ztportal_shared ztportal_background
  EXPORT ztportal-shared-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS ztportal_dscl ztportal_applications
        RUNTIME DESTINATION "${CMAKE_INSTALL_LIBEXECDIR}/${ZT_LIBEXEC_NAME}" COMPONENT runtime)
if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

include(CMakePackageConfigHelpers)

set(ZT_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/ztportal")

# One row for each library that ztportal links: its target, the command with which a host that links
# statically finds it in CMake, its linker flag, and its Debian package. The names of ICU's functions
# contain its major version, so the static library needs exactly that one.
get_directory_property(icu DIRECTORY "${PROJECT_SOURCE_DIR}/ztportal" DEFINITION ICU_VERSION)
string(REGEX MATCH "^[0-9]+" icu "${icu}")
math(EXPR next_icu "${icu} + 1")
set(ZT_FOREIGN_LIBRARIES
    "LibXml2::LibXml2|find_dependency(LibXml2)|-lxml2|libxml2-dev"
    "ICU::i18n|find_dependency(ICU COMPONENTS i18n uc)|-licui18n|libicu-dev (>= ${icu}~), libicu-dev (<< ${next_icu}~)"
    "ICU::uc||-licuuc|"
    "PkgConfig::LIBPLIST|zt_find_module(LIBPLIST libplist-2.0)|-lplist-2.0|libplist-dev"
    "PkgConfig::LIBSYSTEMD|zt_find_module(LIBSYSTEMD libsystemd)|-lsystemd|libsystemd-dev"
    "ZLIB::ZLIB|find_dependency(ZLIB)|-lz|zlib1g-dev")

set(ZT_STATIC_FINDS "")
set(ZT_STATIC_LIBS "")
set(ZT_DEVELOPMENT_PACKAGES "")
set(described "")
foreach(row IN LISTS ZT_FOREIGN_LIBRARIES)
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 target)
  list(GET row 1 find)
  list(GET row 2 flag)
  list(GET row 3 package)
  list(APPEND described "${target}")
  if(find)
    string(APPEND ZT_STATIC_FINDS "${find}\n")
  endif()
  string(APPEND ZT_STATIC_LIBS " ${flag}")
  list(APPEND ZT_DEVELOPMENT_PACKAGES ${package})
endforeach()
string(STRIP "${ZT_STATIC_LIBS}" ZT_STATIC_LIBS)

get_directory_property(linked DIRECTORY "${PROJECT_SOURCE_DIR}/ztportal" DEFINITION ZT_LIBRARIES)
set(differences ${linked})
list(REMOVE_ITEM differences ${described})
if(differences)
  message(FATAL_ERROR "cmake/ZtInstall.cmake has no row for ${differences}, which ztportal links")
endif()

install(
  TARGETS ztportal_static
  EXPORT ztportal-static-targets
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

get_directory_property(headers DIRECTORY "${PROJECT_SOURCE_DIR}/ztportal" DEFINITION ZT_PUBLIC_HEADERS)
get_directory_property(separate DIRECTORY "${PROJECT_SOURCE_DIR}/ztportal" DEFINITION ZT_SEPARATE_HEADERS)
foreach(header IN LISTS headers separate)
  cmake_path(GET header PARENT_PATH module)
  install(
    FILES "${PROJECT_SOURCE_DIR}/ztportal/${header}"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/ztportal/${module}"
    COMPONENT development)
endforeach()

foreach(kind IN ITEMS shared static)
  install(
    EXPORT ztportal-${kind}-targets
    NAMESPACE ztportal::
    DESTINATION "${ZT_PACKAGE_DIR}"
    COMPONENT development)
endforeach()
configure_package_config_file(
  cmake/ztportal-config.cmake.in "${PROJECT_BINARY_DIR}/ztportal-config.cmake"
  INSTALL_DESTINATION "${ZT_PACKAGE_DIR}"
  NO_SET_AND_CHECK_MACRO)
configure_file(cmake/ztportal-static.cmake.in "${PROJECT_BINARY_DIR}/ztportal-static.cmake" @ONLY)
write_basic_package_version_file(
  "${PROJECT_BINARY_DIR}/ztportal-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/ztportal-config.cmake"
        "${PROJECT_BINARY_DIR}/ztportal-config-version.cmake"
        "${PROJECT_BINARY_DIR}/ztportal-static.cmake"
  DESTINATION "${ZT_PACKAGE_DIR}"
  COMPONENT development)

file(RELATIVE_PATH ZT_PREFIX_FROM_PC "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" ZT_PREFIX_FROM_PC "${ZT_PREFIX_FROM_PC}")
configure_file(cmake/ztportal.pc.in "${PROJECT_BINARY_DIR}/ztportal.pc" @ONLY)
install(
  FILES "${PROJECT_BINARY_DIR}/ztportal.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT development)

# Where Debian's Python 3 looks for packages; elsewhere PYTHONPATH has to name the folder.
set(ZT_PYTHON_DIR "lib/python3/dist-packages" CACHE STRING "Folder of the Python package")
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/python/ztportal"
  DESTINATION "${ZT_PYTHON_DIR}"
  COMPONENT python
  FILES_MATCHING
  PATTERN "*.py"
  PATTERN "py.typed"
  PATTERN "__pycache__" EXCLUDE)

if(ZT_BUILD_TOOLS)
  file(RELATIVE_PATH library_from_program "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(ztreport ztinbox PROPERTIES INSTALL_RPATH "$ORIGIN/${library_from_program}")
  install(TARGETS ztreport ztinbox RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
endif()

install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(FILES README.md CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
