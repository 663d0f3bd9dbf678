# SPDX-License-Identifier: Apache-2.0
# Makes Debian packages from the build in BUILD in the folder PACKAGES, unpacks them into the folder
# ROOT, and checks the programs and the library in them.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

file(REMOVE_RECURSE "${PACKAGES}" "${ROOT}")
run("${CPACK}" --config "${BUILD}/CPackConfig.cmake" -B "${PACKAGES}")
file(REMOVE_RECURSE "${PACKAGES}/_CPack_Packages")

file(GLOB packages RELATIVE "${PACKAGES}" "${PACKAGES}/*.deb")
list(TRANSFORM packages REPLACE "_.*" "")
list(SORT packages)
expect_equal("the packages" "${packages}" "libztportal-dev;libztportal1;python3-ztportal;ztportal-doc;ztportal-tools")
file(GLOB packages RELATIVE "${PACKAGES}" "${PACKAGES}/*.ddeb")
list(TRANSFORM packages REPLACE "_.*" "")
list(SORT packages)
expect_equal("the packages of debugging symbols" "${packages}" "libztportal1-dbgsym;ztportal-tools-dbgsym")


file(GLOB packages "${PACKAGES}/*.deb")
foreach(package IN LISTS packages)
  run(dpkg-deb -x "${package}" "${ROOT}")
endforeach()

file(GLOB package "${PACKAGES}/libztportal1_*.deb")
run(dpkg-deb --info "${package}" symbols)
foreach(symbol IN ITEMS "zt_report_create@ZTPORTAL_C_1 1.1.0" "REP_CUSTOMERID_ZT@ZTPORTAL_1 ")
  if(NOT output MATCHES "\n ${symbol}")
    message(FATAL_ERROR "the list of symbols has no ${symbol}")
  endif()
endforeach()

file(GLOB binaries "${ROOT}/usr/bin/*" "${ROOT}/usr/libexec/ztportal-1/*" "${ROOT}/usr/lib*/libztportal.so.1"
     "${ROOT}/usr/lib/*/libztportal.so.1")
list(LENGTH binaries count)
expect_equal("the number of programs and libraries" "${count}" 5)
foreach(binary IN LISTS binaries)
  run(readelf --wide --dynamic --program-headers --dyn-syms --sections "${binary}")
  # The loader finds the library in the system's folders.
  if(output MATCHES "RUNPATH|RPATH")
    message(FATAL_ERROR "${binary} has an RPATH")
  endif()
  # Position-independent; all addresses are resolved at the start and are then read-only; stack frames
  # are guarded.
  foreach(sign IN ITEMS "file type is DYN" "Flags: NOW" "GNU_RELRO" "__stack_chk_fail")
    if(NOT output MATCHES "${sign}")
      message(FATAL_ERROR "${binary} is not hardened: readelf does not print ${sign}")
    endif()
  endforeach()
  if(output MATCHES "[.]debug_info")
    message(FATAL_ERROR "${binary} is not stripped")
  endif()
endforeach()
