# SPDX-License-Identifier: Apache-2.0
# Compiles and links the program SOURCE with the flags that pkg-config prints for the installation whose
# .pc file is in the folder FILES; with STATIC, links the static library. The program must print the content
# of EXPECTED.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

set(ENV{PKG_CONFIG_PATH} "${FILES}")
set(static "")
if(STATIC)
  set(static --static)
endif()

run(pkg-config --modversion ztportal)
expect_equal("the version" "${output}" "${VERSION}\n")
run(pkg-config ${static} --cflags --libs ztportal)
separate_arguments(flags UNIX_COMMAND "${output}")
if(STATIC)
  # The linker prefers the shared library unless the static file is named.
  list(TRANSFORM flags REPLACE "^-lztportal$" "-l:libztportal.a")
else()
  # A host does not link the libraries that the library needs.
  run(pkg-config --libs-only-l ztportal)
  string(STRIP "${output}" output)
  expect_equal("the linked libraries" "${output}" "-lztportal")
  run(pkg-config --variable=libdir ztportal)
  string(STRIP "${output}" output)
  list(APPEND flags "-Wl,-rpath,${output}")
endif()
run(pkg-config --variable=cxx_standard ztportal)
string(STRIP "${output}" standard)
set(compile "${COMPILER}" -std=c++${standard} "${SOURCE}" -o "${PROGRAM}" ${flags})
run(${compile})

# A host with other containers than the library does not link, and reads why.
execute_process(COMMAND ${compile} -D_GLIBCXX_DEBUG -o "${PROGRAM}.debug" RESULT_VARIABLE result
                ERROR_VARIABLE errors)
if(result EQUAL 0 OR NOT errors MATCHES "ZtBuildTheLibraryWithGlibcxxDebugToo")
  message(FATAL_ERROR "a host with -D_GLIBCXX_DEBUG links, or does not read why not:\n${errors}")
endif()

run(readelf --dynamic "${PROGRAM}")
string(FIND "${output}" "libztportal.so.1" found)
if(STATIC AND NOT found EQUAL -1)
  message(FATAL_ERROR "the program needs the shared library")
elseif(NOT STATIC AND found EQUAL -1)
  message(FATAL_ERROR "the program does not need the shared library")
endif()

file(READ "${EXPECTED}" expected)
run("${PROGRAM}")
expect_equal("the output" "${output}" "${expected}")
