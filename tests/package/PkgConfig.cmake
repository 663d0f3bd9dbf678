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
run("${COMPILER}" -std=c++20 "${SOURCE}" -o "${PROGRAM}" ${flags})

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
