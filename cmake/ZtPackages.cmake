# SPDX-License-Identifier: Apache-2.0
# The Debian packages, one for each component; script/package builds them. Debian's file locations need
# the prefix /usr, which the preset `release` sets.

file(STRINGS packaging/changelog changelog LIMIT_COUNT 1)
if(NOT changelog MATCHES "^ztportal \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "packaging/changelog does not begin with version ${PROJECT_VERSION}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ztportal)
set(CPACK_PACKAGE_CONTACT "ztportal maintainers <maintainers@kelvane.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_COMPONENTS_ALL runtime development tools python documentation)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The two packages with programs or libraries. These are stripped, and their debugging symbols are in
# packages of their own.
foreach(component IN ITEMS RUNTIME TOOLS)
  set(CPACK_DEBIAN_${component}_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_${component}_DEBUGINFO_PACKAGE ON)
endforeach()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/lib")
# A program that links libztportal.so.1 depends on the version that its symbols need, or else on this one.
# ZtDebianRepack.cmake makes the list of symbols.
set(soversion ${PROJECT_VERSION_MAJOR})
set(shlibs "${PROJECT_BINARY_DIR}/packaging/shlibs")
file(CONFIGURE OUTPUT "${shlibs}" @ONLY CONTENT
     "libztportal @soversion@ libztportal@soversion@ (>= @PROJECT_VERSION@)\n")
configure_file(packaging/libztportal1.symbols.in packaging/libztportal1.symbols @ONLY)
set(CPACK_ZT_SYMBOLS "${PROJECT_BINARY_DIR}/packaging/libztportal1.symbols")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The descriptions below contain their summary lines.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about
    "A host application fills a report with typed pools. The library writes it as
a SOAP request, posts it to the reporting server of the application's
customer, and saves reports that are not accepted, to send them again later.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libztportal1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# libcurl is loaded at run time, so dpkg-shlibdeps does not see it.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libcurl4 (>= 7.87) | libcurl3-gnutls (>= 7.87)")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers" "${shlibs}")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "reports of desktop applications - shared library
${about}
.
This package contains the files that programs that use the library need to
run.")

list(JOIN ZT_DEVELOPMENT_PACKAGES ", " development_packages)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libztportal-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "libztportal1 (= ${PROJECT_VERSION}), ${development_packages}")
# For the component `static` of the CMake package; for ztportal/base/ZtFormat.h and the reference.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS pkgconf)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libfmt-dev, ztportal-doc")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "reports of desktop applications - development files
${about}
.
This package contains the headers, the static library, the CMake package and
the pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ztportal-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libztportal1 (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "reports of desktop applications - command line and inbox
${about}
.
This package contains ztreport, which reports from a shell, and ztinbox, a
local reporting server that shows the reports it receives.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME ztportal-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION
    "reports of desktop applications - documentation
${about}
.
This package contains the guides, the examples and the reference of the
headers.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-ztportal)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.11), libztportal1 (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/packaging/python/postinst;${PROJECT_SOURCE_DIR}/packaging/python/prerm")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION
    "reports of desktop applications - Python 3 package
${about}
.
This package contains the Python package ztportal.")

set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/ZtDebianFiles.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/ZtDebianRepack.cmake")
set(CPACK_ZT_SOURCE "${PROJECT_SOURCE_DIR}")
set(CPACK_ZT_RELEASE_DATE ${ZT_RELEASE_DATE})
include(CPack)
