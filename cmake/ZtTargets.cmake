# What every target of this project is built with. No global flags: a project that adds this one
# as a part keeps its own.

function(zt_configure_target target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(
    ${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimizing, GCC 12 takes texts that are put together for overlapping copies:
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
    # Tests call the function where a process ends at once.
    target_link_options(${target} PUBLIC --coverage LINKER:--undefined=__gcov_dump)
  endif()
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
#             [SERIAL <patterns>...] [EXCEPT <patterns>...])
#
# One test program; each GoogleTest test in it becomes a CTest test. No test that matches a SERIAL
# pattern runs beside another test; those that match EXCEPT are left to the caller to register.
function(zt_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "SOURCES;LIBRARIES;DEPENDS;SERIAL;EXCEPT")
  add_executable(${name} ${ARG_SOURCES})
  zt_configure_target(${name})
  # Optimizing the tests themselves would double the time it takes to build them.
  target_compile_options(${name} PRIVATE -O0)
  target_precompile_headers(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/Precompiled.h")
  target_link_libraries(${name} PRIVATE zt_test_support ${ARG_LIBRARIES} GTest::gmock_main)
  if(ARG_DEPENDS)
    add_dependencies(${name} ${ARG_DEPENDS})
  endif()
  set(apart ${ARG_SERIAL} ${ARG_EXCEPT})
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
