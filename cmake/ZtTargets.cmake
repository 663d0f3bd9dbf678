# SPDX-License-Identifier: Apache-2.0
# Functions that define this project's targets. They set options for each target and no global flags,
# so a project that includes this one keeps its own.

function(zt_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(
    ${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion)
  if(NOT CMAKE_UNITY_BUILD)
    target_compile_options(${target} PRIVATE -Wshadow)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # A unity build compiles several source files as one: a local name may be that of another file's
    # function, and GCC takes the source files for headers.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # When it optimises, GCC 12 reports overlapping copies in string concatenations that have none:
    # https://gcc.gnu.org/bugzilla/show_bug.cgi?id=105651
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(ZT_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZT_SANITIZE)
    target_compile_options(
      ${target} PRIVATE -fsanitize=${ZT_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    target_link_options(${target} PUBLIC -fsanitize=${ZT_SANITIZE})
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/SanitizerOptions.cpp")
    endif()
  endif()
  if(ZT_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    # Tests call this function before a process ends with _exit.
    target_link_options(${target} PUBLIC --coverage LINKER:--undefined=__gcov_dump)
  endif()
endfunction()

# A library or program that is installed, unlike the tests. It is hardened like Debian's packages
# (dpkg-buildflags), and its bytes do not depend on the folder where it is built.
function(zt_configure_product target)
  zt_configure_target(${target})
  if(ZT_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Debug")
    return()
  endif()
  set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
  target_compile_options(
    ${target} PRIVATE -fstack-protector-strong "$<${optimised}:-U_FORTIFY_SOURCE>"
                      "$<${optimised}:-D_FORTIFY_SOURCE=2>" $<$<BOOL:${ZT_DEBUG_INFO}>:-g>
                      # The last one that matches counts.
                      "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=."
                      "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
endfunction()

# The standard headers that most files of a library include, compiled once for each target: it halves
# the time of most files. Every file still includes what it uses; script/lint compiles without this.
function(zt_precompile_headers target)
  target_precompile_headers(
    ${target}
    PRIVATE
    <algorithm>
    <array>
    <chrono>
    <functional>
    <map>
    <memory>
    <optional>
    <string>
    <string_view>
    <vector>)
endfunction()

# zt_add_test(<name> SOURCES <files>... LIBRARIES <targets>... [DEPENDS <targets>...]
#             [SERIAL <patterns>...] [EXCEPT <patterns>...] [SINGLE_THREADED <patterns>...])
#
# Adds a test program; each of its GoogleTest tests becomes a CTest test. Tests that match a SERIAL
# pattern run while no other test does. The caller registers those that match an EXCEPT pattern. Those
# that match a SINGLE_THREADED pattern take long and are left out under the thread sanitizer.
function(zt_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBRARIES;DEPENDS;SERIAL;EXCEPT;SINGLE_THREADED")
  add_executable(${name} ${ARG_SOURCES})
  zt_configure_target(${name})
  # Optimising the tests would double their build time.
  target_compile_options(${name} PRIVATE -O0)
  target_precompile_headers(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/Precompiled.h")
  target_link_libraries(${name} PRIVATE zt_test_support ${ARG_LIBRARIES} GTest::gmock_main)
  if(ARG_DEPENDS)
    add_dependencies(${name} ${ARG_DEPENDS})
  endif()
  set(apart ${ARG_SERIAL} ${ARG_EXCEPT})
  if(ZT_SANITIZE STREQUAL "thread")
    list(APPEND apart ${ARG_SINGLE_THREADED})
  endif()
  list(JOIN apart ":" apart)
  list(JOIN ARG_SERIAL ":" serial)
  if(serial)
    gtest_discover_tests(
      ${name} DISCOVERY_MODE PRE_TEST TEST_FILTER "${serial}" TEST_LIST ${name}_SERIAL
      PROPERTIES TIMEOUT 300 RUN_SERIAL ON)
  endif()
  gtest_discover_tests(
    ${name} DISCOVERY_MODE PRE_TEST TEST_FILTER "-${apart}" PROPERTIES TIMEOUT 300)
endfunction()
