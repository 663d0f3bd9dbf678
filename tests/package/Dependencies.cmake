# Every package that a package in the folder PACKAGES depends on is another of them, or one that is
# on this machine in such a version.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

# version_of(<package> <variable>): the version of a package here or on this machine, or empty.
function(version_of package variable)
  file(GLOB own "${PACKAGES}/${package}_*.deb")
  if(own)
    run(dpkg-deb -f "${own}" Version)
  else()
    execute_process(
      COMMAND dpkg-query -W -f "\${Version}" "${package}"
      OUTPUT_VARIABLE output
      ERROR_QUIET)
  endif()
  string(STRIP "${output}" output)
  set(${variable} "${output}" PARENT_SCOPE)
endfunction()

file(GLOB packages "${PACKAGES}/*.deb")
foreach(file IN LISTS packages)
  run(dpkg-deb -f "${file}" Depends)
  string(STRIP "${output}" depends)
  if(NOT depends)
    message(FATAL_ERROR "${file} depends on nothing")
  endif()
  string(REPLACE ", " ";" depends "${depends}")
  foreach(dependency IN LISTS depends)
    if(NOT dependency MATCHES "^([a-z0-9.+-]+)( \\(([<>=]+) ([^)]+)\\))?$")
      message(FATAL_ERROR "${file} depends on \"${dependency}\", which cannot be read")
    endif()
    set(package "${CMAKE_MATCH_1}")
    set(relation "${CMAKE_MATCH_3}")
    set(wanted "${CMAKE_MATCH_4}")
    version_of("${package}" version)
    if(NOT version)
      message(FATAL_ERROR "${file} depends on ${package}, which is not there")
    endif()
    if(relation)
      run(dpkg --compare-versions "${version}" "${relation}" "${wanted}")
    endif()
  endforeach()
endforeach()
