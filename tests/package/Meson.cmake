# SPDX-License-Identifier: Apache-2.0
# Builds the project in SOURCE with Meson in the folder BINARY, installs it and runs it there. Its program
# `consumer` has to print the content of EXPECTED. The library is the one whose .pc file is in the folder
# FILES or, without FILES, the one in the sources LIBRARY.

include("${CMAKE_CURRENT_LIST_DIR}/Command.cmake")

file(REMOVE_RECURSE "${BINARY}")
file(COPY "${SOURCE}/meson.build" "${SOURCE}/main.cpp" DESTINATION "${BINARY}/source")
if(NOT FILES)
  file(MAKE_DIRECTORY "${BINARY}/source/subprojects")
  file(CREATE_LINK "${LIBRARY}" "${BINARY}/source/subprojects/ztportal" SYMBOLIC)
endif()
set(ENV{PKG_CONFIG_PATH} "${FILES}")
run(meson setup "${BINARY}/build" "${BINARY}/source" --prefix "${BINARY}/installed" --buildtype release)
run(meson install -C "${BINARY}/build")
file(REMOVE_RECURSE "${BINARY}/build")

file(READ "${EXPECTED}" expected)
run("${BINARY}/installed/bin/consumer")
expect_equal("the output" "${output}" "${expected}")
file(GLOB helpers RELATIVE "${BINARY}/installed" "${BINARY}/installed/libexec/*/*")
if(NOT FILES)
  expect_equal("the helper programs" "${helpers}"
               "libexec/ztportal-1/dscl;libexec/ztportal-1/ztportal-applications")
endif()
