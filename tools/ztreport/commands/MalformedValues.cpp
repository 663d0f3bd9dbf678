// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/MalformedValues.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/common/LineCursor.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

using reader::quoted;

/// Whether an XML parser would refuse an element with this content.
bool isMalformed(std::string_view text) {
  return ZtXMLDocument::parse("<a>" + std::string(text) + "</a>") == nullptr;
}

/// Whether it would refuse an attribute with this value.
bool isMalformedInQuotes(std::string_view text) {
  return ZtXMLDocument::parse("<a b=" + quoted(text) + "/>") == nullptr;
}

std::vector<std::string> placesIn(const reader::ParsedReport& report) {
  std::vector<std::string> places;
  const std::pair<const char*, std::string_view> header[] = {
      {"CustomerID", report.customerId},
      {"ApplicationID", report.applicationId},
      {"ApplicationVersion", report.applicationVersion},
  };
  for (const auto& [name, value] : header) {
    if (isMalformed(value)) places.push_back("the value of " + std::string(name));
  }
  for (const reader::Pool& pool : report.pools) {
    const std::string inPool = " in the pool " + std::string(pool.type);
    if (isMalformedInQuotes(pool.type)) places.push_back("the pool type " + quoted(pool.type));
    for (std::size_t i = pool.begin; i < pool.end; ++i) {
      const reader::Field& field = report.fields[i];
      if (isMalformed(field.name)) places.push_back("the name " + quoted(field.name) + inPool);
      if (isMalformed(field.value)) {
        places.push_back("the value of " + std::string(field.name) + inPool);
      }
    }
  }
  return places;
}

}  // namespace

std::string malformedValues(const std::string& report) {
  const auto [parsed, fault] = reader::readReportUpToFault(report);
  const std::vector<std::string> places = placesIn(parsed);
  if (places.empty()) return fault ? std::string("a value, ") + fault->what() : "";
  const std::size_t others = places.size() - 1;
  return places.front() + (others == 0 ? "" : " (and " + std::to_string(others) + " more)");
}

}  // namespace zt::tools
