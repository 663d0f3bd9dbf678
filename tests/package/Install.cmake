# SPDX-License-Identifier: Apache-2.0
# Installs the build in BUILD component by component, and moves the installation to PREFIX. No installed
# file may contain the path where it was built or first installed.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

set(first "${PREFIX}.first")
file(REMOVE_RECURSE "${PREFIX}" "${first}")

# Installs a component and checks that each of its files matches a pattern.
function(expect_component component pattern)
  run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${first}/${component}" --component ${component})
  file(GLOB_RECURSE files RELATIVE "${first}/${component}" "${first}/${component}/*")
  if(NOT files)
    message(FATAL_ERROR "the component ${component} is empty")
  endif()
  set(strangers ${files})
  list(FILTER strangers EXCLUDE REGEX "${pattern}")
  if(strangers)
    message(FATAL_ERROR "the component ${component} has the unexpected files ${strangers}")
  endif()
endfunction()
expect_component(
  runtime "^${LIBDIR}/libztportal[.]so[.]1|^libexec/ztportal-1/")
expect_component(
  development
  "^include/ztportal/|^${LIBDIR}/libztportal[.](so|a)$|^${LIBDIR}/cmake/ztportal/|^${LIBDIR}/pkgconfig/|^share/man/man3/|^share/doc/ztportal/ztportal[.]spdx[.]json$"
)
expect_component(tools "^bin/zt|^share/")
expect_component(python "^lib/python3/dist-packages/ztportal/([a-z_]+[.]py|py[.]typed)$")

file(MAKE_DIRECTORY "${first}/all")
foreach(component IN ITEMS runtime development tools python)
  run("${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${first}/all" --component ${component})
endforeach()
file(RENAME "${first}/all" "${PREFIX}")
file(REMOVE_RECURSE "${first}")

execute_process(
  COMMAND grep -rlF -e "${first}" -e "${BUILD}" -e "${SOURCE}" "${PREFIX}"
  OUTPUT_VARIABLE bound)
expect_equal("the files that contain the path where they were built" "${bound}" "")
