# Makes Debian packages from the build in BUILD in the folder PACKAGES, and unpacks them into the folder
# ROOT.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

file(REMOVE_RECURSE "${PACKAGES}" "${ROOT}")
run("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${PACKAGES}")
file(REMOVE_RECURSE "${PACKAGES}/_CPack_Packages")

file(GLOB packages RELATIVE "${PACKAGES}" "${PACKAGES}/*.deb")
list(TRANSFORM packages REPLACE "_.*" "")
list(SORT packages)
expect_equal("the packages" "${packages}" "libztportal-dev;libztportal1;python3-ztportal;ztportal-tools")

file(GLOB packages "${PACKAGES}/*.deb")
foreach(package IN LISTS packages)
  run(dpkg-deb -x "${package}" "${ROOT}")
endforeach()

# The programs have no RPATH, because the loader finds the library in the system's folders.
file(GLOB programs "${ROOT}/usr/bin/*")
foreach(program IN LISTS programs)
  run(readelf --dynamic "${program}")
  if(output MATCHES "RUNPATH|RPATH")
    message(FATAL_ERROR "${program} has an RPATH")
  endif()
endforeach()
