# SPDX-License-Identifier: Apache-2.0
# Compiles host.c with nothing but the C compiler, the installation in PREFIX and -lztportal, and runs it
# with a new data folder: under VALGRIND, unless that is empty. The host must need no C++ library, and call
# every function that the library exports for hosts in C.

include("${CMAKE_CURRENT_LIST_DIR}/../Command.cmake")

set(library "${PREFIX}/${LIBDIR}/libztportal.so")
run("${COMPILER}" -std=c11 -g -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    "${CMAKE_CURRENT_LIST_DIR}/host.c" -I "${PREFIX}/include" -L "${PREFIX}/${LIBDIR}" -lztportal
    "-Wl,-rpath,${PREFIX}/${LIBDIR}" -o "${PROGRAM}")

run(readelf --dynamic "${PROGRAM}")
string(REGEX MATCHALL "Shared library: [^\n]*" needed "${output}")
expect_equal("the libraries that the host needs" "${needed}"
             "Shared library: [libztportal.so.1];Shared library: [libc.so.6]")

run(nm --dynamic --defined-only --with-symbol-versions "${library}")
string(REGEX MATCHALL "zt_[^\n]*" exported "${output}")
run(nm --dynamic --undefined-only --with-symbol-versions "${PROGRAM}")
string(REGEX MATCHALL "zt_[^\n]*@ZTPORTAL_C_1" used "${output}")
list(TRANSFORM used REPLACE "@" "@@")
set(unused ${exported})
list(REMOVE_ITEM unused ${used})
expect_equal("the functions that the host does not call" "${unused}" "")

set(data "${PROGRAM}.data")
file(REMOVE_RECURSE "${data}")
file(MAKE_DIRECTORY "${data}")
set(ENV{XDG_DATA_HOME} "${data}")
set(command "${PROGRAM}")
if(VALGRIND)
  set(command
      "${VALGRIND}" --quiet --error-exitcode=99 --leak-check=full
      --show-leak-kinds=definite,indirect --errors-for-leak-kinds=definite,indirect
      "${PROGRAM}")
endif()
run(${command})
