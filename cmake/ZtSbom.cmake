# SPDX-License-Identifier: Apache-2.0
# The software bill of materials: which libraries the product needs, in which version it was built with
# them, and under which licence they are, as an SPDX 2.3 document (ISO/IEC 5962). It is written when
# CMake configures, and installed with the development files.
#
# One row for each library: its pkg-config module, its licence (SPDX), the part that needs it, and how:
# the relationship of SPDX.
set(ZT_SBOM_ROWS
    "libcurl|curl|library|RUNTIME_DEPENDENCY_OF"
    "libxml-2.0|MIT|library|DYNAMIC_LINK"
    "icu-i18n|Unicode-DFS-2016|library|DYNAMIC_LINK"
    "libplist-2.0|LGPL-2.1-or-later|library|DYNAMIC_LINK"
    "libsystemd|LGPL-2.1-or-later|library|DYNAMIC_LINK"
    "zlib|Zlib|library|DYNAMIC_LINK"
    "nlohmann_json|MIT|library|STATIC_LINK"
    "gio-2.0|LGPL-2.1-or-later|library|DYNAMIC_LINK"
    "CLI11|BSD-3-Clause|programs|STATIC_LINK"
    "Boost|BSL-1.0|programs|STATIC_LINK"
    "sqlite3|blessing|programs|DYNAMIC_LINK"
    "libpqxx|BSD-3-Clause|programs|DYNAMIC_LINK"
    "liblz4|BSD-2-Clause|programs|DYNAMIC_LINK")

find_package(PkgConfig REQUIRED)
set(packages "")
set(relationships "")
foreach(row IN LISTS ZT_SBOM_ROWS)
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 module)
  list(GET row 1 licence)
  list(GET row 2 part)
  list(GET row 3 relationship)
  if(part STREQUAL "programs" AND NOT ZT_BUILD_TOOLS)
    continue()
  endif()
  if(module STREQUAL "Boost") # has no pkg-config module
    find_package(Boost REQUIRED)
    set(version "${Boost_VERSION_STRING}")
  else()
    execute_process(
      COMMAND "${PKG_CONFIG_EXECUTABLE}" --modversion ${module}
      OUTPUT_VARIABLE version
      OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
  string(REPLACE "_" "-" id "SPDXRef-${module}")
  string(APPEND packages ",
    {\"SPDXID\": \"${id}\", \"name\": \"${module}\", \"versionInfo\": \"${version}\",
     \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false,
     \"licenseConcluded\": \"${licence}\", \"licenseDeclared\": \"${licence}\",
     \"copyrightText\": \"NOASSERTION\"}")
  if(relationship STREQUAL "RUNTIME_DEPENDENCY_OF")
    set(ends "\"${id}\", \"relatedSpdxElement\": \"SPDXRef-${part}\"")
  else()
    set(ends "\"SPDXRef-${part}\", \"relatedSpdxElement\": \"${id}\"")
  endif()
  string(APPEND relationships ",
    {\"spdxElementId\": ${ends}, \"relationshipType\": \"${relationship}\"}")
endforeach()

# The date of the document is that of the release, so that all builds write the same one.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{SOURCE_DATE_EPOCH} ${ZT_RELEASE_DATE})
endif()
string(TIMESTAMP created UTC)
set(own "\"versionInfo\": \"${PROJECT_VERSION}\", \"downloadLocation\": \"NOASSERTION\",
     \"filesAnalyzed\": false, \"licenseConcluded\": \"Apache-2.0\",
     \"licenseDeclared\": \"Apache-2.0\", \"copyrightText\": \"2026 ztportal maintainers\"")
string(SUBSTRING "${packages}" 1 -1 packages) # without the first comma
string(SUBSTRING "${relationships}" 1 -1 relationships)
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/ztportal.spdx.json" @ONLY CONTENT
[[{
  "spdxVersion": "SPDX-2.3",
  "dataLicense": "CC0-1.0",
  "SPDXID": "SPDXRef-DOCUMENT",
  "name": "ztportal-@PROJECT_VERSION@",
  "documentNamespace": "https://kelvane.example/spdx/ztportal-@PROJECT_VERSION@",
  "creationInfo": {"created": "@created@", "creators": ["Organization: ztportal maintainers"]},
  "documentDescribes": ["SPDXRef-library", "SPDXRef-programs"],
  "packages": [
    {"SPDXID": "SPDXRef-library", "name": "libztportal", @own@},
    {"SPDXID": "SPDXRef-programs", "name": "ztportal-tools", @own@},@packages@],
  "relationships": [
    {"spdxElementId": "SPDXRef-programs", "relationshipType": "DYNAMIC_LINK",
     "relatedSpdxElement": "SPDXRef-library"},@relationships@]
}
]])
install(
  FILES "${PROJECT_BINARY_DIR}/ztportal.spdx.json"
  DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  COMPONENT development)
