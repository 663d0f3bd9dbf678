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

# zt_add_test(<name> [SHARED] [RUN_SERIAL] SOURCES <files>... [LIBRARIES <targets>...]
#             [DEPENDS <targets>...] [NOT_RUN <tests>...])
#
# One test program of a room; each GoogleTest test in it becomes a CTest test. It is linked with the
# static library, whose inner parts are visible to it, or with SHARED as a host is: with the shared
# library, whose public parts alone are. With RUN_SERIAL none of its tests runs beside another test.
# NOT_RUN names tests in it that CTest leaves out.
function(zt_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "SHARED;RUN_SERIAL" "" "SOURCES;LIBRARIES;DEPENDS;NOT_RUN")
  add_executable(${name} ${ARG_SOURCES})
  zt_configure_target(${name})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimizing, GCC 12 misses values that tables of tests are made with.
    target_compile_options(${name} PRIVATE -Wno-maybe-uninitialized)
  endif()
  set(support zt_test_support)
  if(ARG_SHARED)
    set(support zt_test_support_shared)
  endif()
  target_link_libraries(${name} PRIVATE ${support} ${ARG_LIBRARIES} GTest::gmock_main)
  if(ARG_DEPENDS)
    add_dependencies(${name} ${ARG_DEPENDS})
  endif()
  set(filter)
  if(ARG_NOT_RUN)
    list(JOIN ARG_NOT_RUN ":" left_out)
    set(filter TEST_FILTER "-${left_out}")
  endif()
  gtest_discover_tests(
    ${name} DISCOVERY_MODE PRE_TEST ${filter} PROPERTIES TIMEOUT 300 RUN_SERIAL ${ARG_RUN_SERIAL})
endfunction()
