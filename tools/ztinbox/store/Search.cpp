// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/Search.h"

#include <algorithm>

#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
/// Shorter beginnings would match words of almost every report.
constexpr std::size_t kShortestBeginning = 3;

/// The index consists of letters and digits only.
bool isWordCharacter(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

void addTerm(std::vector<SearchTerm>& terms, std::string_view text, bool mayGoOn) {
  if (std::ranges::none_of(text, isWordCharacter)) return;
  SearchTerm term{std::string(text), false};
  std::ranges::replace(term.text, '\0', ' ');
  term.isBeginning = mayGoOn && isWordCharacter(text.back()) && text.size() >= kShortestBeginning;
  terms.push_back(std::move(term));
}

void addLine(std::string& text, std::string_view line) {
  const std::size_t left = kLongestSearchText - std::min(text.size(), kLongestSearchText);
  const std::string_view part = line.substr(0, std::min(kLongestSearchedValue, left));
  if (!part.empty()) text.append(part).append("\n");
}

}  // namespace

std::vector<SearchTerm> searchTerms(std::string_view typed) {
  std::vector<SearchTerm> terms;
  while (!typed.empty()) {
    if (typed.front() == '"') {
      typed.remove_prefix(1);
      const std::size_t end = std::min(typed.find('"'), typed.size());
      addTerm(terms, typed.substr(0, end), false);
      typed.remove_prefix(std::min(end + 1, typed.size()));
      continue;
    }
    const std::size_t end =
        std::min(typed.find_first_of(std::string(kBlanks) + "\""), typed.size());
    addTerm(terms, typed.substr(0, end), true);
    typed.remove_prefix(end);
    typed.remove_prefix(std::min(typed.find_first_not_of(kBlanks), typed.size()));
  }
  return terms;
}

std::string searchText(std::string_view report) {
  const auto [parsed, fault] = reader::readReportUpToFault(report);
  if (fault) return std::string(report.substr(0, kLongestSearchText));
  std::string text;
  const ReportIdentity identity = identityOf(parsed);
  for (const auto& value : {identity.reportId, identity.machineId, identity.customerId,
                            identity.applicationId, identity.applicationVersion}) {
    if (value) addLine(text, *value);
  }
  for (const reader::Pool& pool : parsed.pools) {
    addLine(text, pool.type);
    for (std::size_t i = pool.begin; i < pool.end; ++i) {
      addLine(text, parsed.fields[i].name);
      addLine(text, parsed.fields[i].value);
    }
  }
  return text;
}

}  // namespace zt::inbox
