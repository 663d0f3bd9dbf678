# SPDX-License-Identifier: Apache-2.0
# Builds the project in SOURCE in the folder BINARY, with the library installed in PREFIX or, depending
# on OPTIONS, with the library's sources. With EXPECTED, its program `consumer` has to print the content
# of that file; with REFUSED, its configuration has to fail with a message that matches. With INSTALLED,
# the program is installed and moved, and has to print the same then; the installation has to consist of
# files whose names match that pattern, which include the library's helper programs.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

separate_arguments(OPTIONS UNIX_COMMAND "${OPTIONS}")
file(REMOVE_RECURSE "${BINARY}")
set(configure "${CMAKE_COMMAND}" -S "${SOURCE}" -B "${BINARY}" -G Ninja "-DCMAKE_PREFIX_PATH=${PREFIX}"
              "-DCMAKE_CXX_COMPILER=${COMPILER}" ${OPTIONS})

if(REFUSED)
  execute_process(COMMAND ${configure} RESULT_VARIABLE result OUTPUT_VARIABLE ignored ERROR_VARIABLE errors)
  string(REGEX REPLACE "[ \n]+" " " errors "${errors}")
  if(result EQUAL 0)
    message(FATAL_ERROR "the configuration does not fail")
  elseif(NOT errors MATCHES "${REFUSED}")
    message(FATAL_ERROR "the configuration fails with\n${errors}\nwhich does not match\n${REFUSED}")
  endif()
  return()
endif()

run(${configure})
if(EXPECTED)
  # Builds only the parts of the library's sources that the program needs.
  set(target --target consumer)
endif()
run("${CMAKE_COMMAND}" --build "${BINARY}" ${target})
if(EXPECTED)
  file(READ "${EXPECTED}" expected)
  run("${BINARY}/consumer")
  expect_equal("the output" "${output}" "${expected}")
endif()
if(INSTALLED)
  run("${CMAKE_COMMAND}" --install "${BINARY}" --prefix "${BINARY}/first")
  file(RENAME "${BINARY}/first" "${BINARY}/installed")
  run("${BINARY}/installed/bin/consumer")
  expect_equal("the output of the installed program" "${output}" "${expected}")
  file(GLOB_RECURSE files RELATIVE "${BINARY}/installed" "${BINARY}/installed/*")
  set(strangers ${files})
  list(FILTER strangers EXCLUDE REGEX "${INSTALLED}")
  expect_equal("the unexpected files" "${strangers}" "")
  list(FILTER files INCLUDE REGEX "^libexec/")
  expect_equal("the helper programs" "${files}" "libexec/ztportal-1/dscl;libexec/ztportal-1/ztportal-applications")
endif()
