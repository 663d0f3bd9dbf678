# SPDX-License-Identifier: Apache-2.0
# CPack runs this after it has installed each component into a folder and before it makes the packages:
# adds and changes what Debian's policy requires and other installations do not need.

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(packaging "${CPACK_ZT_SOURCE}/packaging")
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER "${component}" COMPONENT)
  set(prefix "${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}")
  set(package "${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME}")
  set(doc "${prefix}/share/doc/${package}")

  file(COPY "${packaging}/copyright" "${packaging}/changelog" DESTINATION "${doc}")
  run(gzip -9n "${doc}/changelog")
  if(EXISTS "${packaging}/${package}.lintian-overrides")
    file(
      COPY "${packaging}/${package}.lintian-overrides"
      DESTINATION "${prefix}/share/lintian/overrides")
    file(RENAME "${prefix}/share/lintian/overrides/${package}.lintian-overrides"
         "${prefix}/share/lintian/overrides/${package}")
  endif()

  if(component STREQUAL "documentation")
    run("${CPACK_ZT_SOURCE}/script/docs" "${prefix}/share/doc/ztportal/html")
    file(REMOVE "${prefix}/share/doc/ztportal/html/.made-by-script-docs")
    file(COPY "${packaging}/doc-base/" DESTINATION "${prefix}/share/doc-base")
  endif()

  file(GLOB pages "${prefix}/share/man/man*/*.[1-9]")
  if(component STREQUAL "tools" AND NOT pages)
    message(FATAL_ERROR "The packages need the manual pages: install help2man and configure again")
  endif()
  foreach(page IN LISTS pages)
    run(gzip -9n "${page}")
  endforeach()

  # The loader finds the library in /usr/lib without an RPATH.
  file(GLOB programs "${prefix}/bin/*" "${prefix}/libexec/*/*")
  foreach(program IN LISTS programs)
    file(RPATH_REMOVE FILE "${program}")
  endforeach()

  # As Debian does: no debugging symbols, but everything that a linker needs.
  file(GLOB_RECURSE archives "${prefix}/*.a")
  foreach(archive IN LISTS archives)
    run(strip --strip-debug --enable-deterministic-archives --remove-section=.comment "${archive}")
  endforeach()
endforeach()
