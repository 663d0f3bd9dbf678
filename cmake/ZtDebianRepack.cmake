# SPDX-License-Identifier: Apache-2.0
# CPack runs this after it has made the packages. It has written the time of the build and the builder's
# umask into them; here they get the date of the release and Debian's permissions.

function(run)
  execute_process(COMMAND ${ARGN} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(ENV{SOURCE_DATE_EPOCH} ${CPACK_ZT_RELEASE_DATE})
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(unpacked "${package}.unpacked")
  run(dpkg-deb --raw-extract "${package}" "${unpacked}")
  # CPack's scripts only call ldconfig, which the trigger does.
  file(REMOVE "${unpacked}/DEBIAN/postinst" "${unpacked}/DEBIAN/postrm")
  # CPack lists the files of debugging symbols with the folder in which it has packed them.
  file(READ "${unpacked}/DEBIAN/md5sums" sums)
  string(REGEX REPLACE "  /[^\n]*/usr/" "  usr/" sums "${sums}")
  file(WRITE "${unpacked}/DEBIAN/md5sums" "${sums}")
  if(package MATCHES "/libztportal1_")
    # -c4: fails unless the file names the symbols that there are.
    run(
      dpkg-gensymbols -plibztportal1 -v${CPACK_PACKAGE_VERSION} -c4 "-I${CPACK_ZT_SYMBOLS}"
      "-P${unpacked}" "-O${unpacked}/DEBIAN/symbols")
  endif()
  run(chmod -R u=rwX,go=rX "${unpacked}")
  run(find "${unpacked}" -exec touch --no-dereference --date=@${CPACK_ZT_RELEASE_DATE} {} +)
  run(dpkg-deb --root-owner-group -Zgzip --build "${unpacked}" "${package}")
  file(REMOVE_RECURSE "${unpacked}")
endforeach()
