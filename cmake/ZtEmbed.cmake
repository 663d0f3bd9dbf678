# SPDX-License-Identifier: Apache-2.0
# Functions that embed files in a program.

# zt_embed_text(<target> <file> NAME <name> HEADER <header>)
#
# Adds the bytes of the file to the target as the std::string_view <name> (with its namespaces), which
# <header> declares.
function(zt_embed_text target file)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "NAME;HEADER" "")
  get_filename_component(input "${file}" ABSOLUTE)
  get_filename_component(stem "${file}" NAME)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${stem}.cpp")
  set(script "${PROJECT_SOURCE_DIR}/cmake/EmbedText.cmake")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} "-DINPUT=${input}" "-DOUTPUT=${output}" "-DNAME=${ARG_NAME}"
            "-DHEADER=${ARG_HEADER}" -P "${script}"
    DEPENDS "${input}" "${script}"
    VERBATIM)
  # script/lint reads the batches of a unity build without building anything.
  set_source_files_properties("${output}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE "${output}")
endfunction()

# zt_embed_folder(<target> <folder> NAME <name> HEADER <header> FILES <names>...)
#
# Adds the named files of the folder to the target as the std::span<const zt::EmbeddedFile> <name>
# (with its namespaces), which <header> declares.
function(zt_embed_folder target folder)
  cmake_parse_arguments(PARSE_ARGV 2 ARG "" "NAME;HEADER" "FILES")
  get_filename_component(input "${folder}" ABSOLUTE)
  list(JOIN ARG_FILES "," names)
  list(TRANSFORM ARG_FILES PREPEND "${input}/")
  get_filename_component(stem "${folder}" NAME)
  set(output "${CMAKE_CURRENT_BINARY_DIR}/${stem}.files.cpp")
  set(script "${PROJECT_SOURCE_DIR}/cmake/EmbedFolder.cmake")
  add_custom_command(
    OUTPUT "${output}"
    COMMAND ${CMAKE_COMMAND} "-DFOLDER=${input}" "-DFILES=${names}" "-DOUTPUT=${output}"
            "-DNAME=${ARG_NAME}" "-DHEADER=${ARG_HEADER}" -P "${script}"
    DEPENDS ${ARG_FILES} "${script}" "${CMAKE_CURRENT_LIST_FILE}"
    VERBATIM)
  # script/lint reads the batches of a unity build without building anything.
  set_source_files_properties("${output}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE "${output}")
endfunction()
