# SPDX-License-Identifier: Apache-2.0
# Compiles and statically links the program SOURCE, which includes all public headers, with the unpacked
# development package. The Debian packages that contain the files that the compiler reads for that have
# to be those that the package in the folder PACKAGES depends on, besides the ones of the compiler.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

set(ENV{PKG_CONFIG_PATH} "${ROOT}/${LIBDIR}/pkgconfig")
run(pkg-config --static --cflags --libs ztportal)
separate_arguments(flags UNIX_COMMAND "${output}")
list(TRANSFORM flags REPLACE "^-lztportal$" "-l:libztportal.a")

# The headers, then the files that the linker opens.
run("${COMPILER}" -std=c++20 -M "${SOURCE}" ${flags})
string(REGEX MATCHALL "/[^ \n\\]+" files "${output}")
run("${COMPILER}" -std=c++20 "${SOURCE}" -o "${PROGRAM}" -Wl,--trace ${flags})
string(REGEX MATCHALL "/[^ \n()]+" linked "${output}")
set(used "")
foreach(file IN LISTS files linked)
  cmake_path(NORMAL_PATH file)
  list(APPEND used "${file}")
endforeach()
list(REMOVE_DUPLICATES used)
list(FILTER used EXCLUDE REGEX "^${ROOT}/|^${SOURCE}$|[.]o$")

# Shared libraries that others need are found in packages that are not for development.
execute_process(COMMAND dpkg-query --search ${used} OUTPUT_VARIABLE owners ERROR_QUIET)
string(REGEX MATCHALL "[a-z0-9.+-]+-dev[:,]" owners "${owners}")
list(TRANSFORM owners REPLACE "[:,]" "")
list(REMOVE_DUPLICATES owners)
list(FILTER owners EXCLUDE REGEX "^libc6-dev$|^libgcc-|^libstdc[+][+]-|^linux-libc-dev$")
list(SORT owners)

file(GLOB package "${PACKAGES}/libztportal-dev_*.deb")
run(dpkg-deb --field "${package}" Depends)
string(REGEX MATCHALL "[a-z0-9.+-]+-dev" listed "${output}")
list(REMOVE_DUPLICATES listed)
list(SORT listed)
expect_equal("the packages that libztportal-dev needs" "${listed}" "${owners}")
