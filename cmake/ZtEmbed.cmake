# Files that are a part of a program.

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
  target_sources(${target} PRIVATE "${output}")
endfunction()
