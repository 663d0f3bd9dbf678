// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/Search.h"

#include <algorithm>
#include <vector>

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

void addWord(std::string& expression, std::string_view word, bool mayGoOn) {
  if (std::ranges::none_of(word, isWordCharacter)) return;
  if (!expression.empty()) expression += " AND ";
  expression += '"';
  for (const char character : word) expression += character == '\0' ? ' ' : character;
  expression += '"';
  const bool endsInWord = isWordCharacter(word.back());
  if (mayGoOn && endsInWord && word.size() >= kShortestBeginning) expression += " *";
}

void addLine(std::string& text, std::string_view line) {
  const std::size_t left = kLongestSearchText - std::min(text.size(), kLongestSearchText);
  const std::string_view part = line.substr(0, std::min(kLongestSearchedValue, left));
  if (!part.empty()) text.append(part).append("\n");
}

// A sender may have to wait for one portion, which takes some milliseconds.
constexpr std::int64_t kReportsOfPortion = 32;
constexpr std::size_t kBytesOfPortion = std::size_t{1024} * 1024;

}  // namespace

std::string searchExpression(std::string_view typed) {
  std::string expression;
  while (!typed.empty()) {
    if (typed.front() == '"') {
      typed.remove_prefix(1);
      const std::size_t end = std::min(typed.find('"'), typed.size());
      addWord(expression, typed.substr(0, end), false);
      typed.remove_prefix(std::min(end + 1, typed.size()));
      continue;
    }
    const std::size_t end =
        std::min(typed.find_first_of(std::string(kBlanks) + "\""), typed.size());
    addWord(expression, typed.substr(0, end), true);
    typed.remove_prefix(end);
    typed.remove_prefix(std::min(typed.find_first_not_of(kBlanks), typed.size()));
  }
  return expression;
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

SearchIndexer::SearchIndexer(Database& database)
    : _selectPortion(database, "SELECT report FROM unsearched ORDER BY report LIMIT ?"),
      _selectBody(database,
                  "SELECT b.body, r.size FROM bodies b JOIN reports r ON r.number = b.report"
                  " WHERE b.report = ?"),
      _removeText(database, "DELETE FROM search WHERE rowid = ?"),
      _insertText(database, "INSERT INTO search (rowid, text) VALUES (?, ?)"),
      _done(database, "DELETE FROM unsearched WHERE report = ?") {}

bool SearchIndexer::indexPortion() {
  std::vector<std::int64_t> numbers;
  for (_selectPortion.bind(kReportsOfPortion); _selectPortion.next();) {
    numbers.push_back(_selectPortion.integer(0));
  }
  _selectPortion.reset();
  std::size_t bytes = 0;
  for (const std::int64_t number : numbers) {
    _removeText.run(number);
    _selectBody.bind(number);
    if (_selectBody.next()) {
      const auto size = static_cast<std::size_t>(_selectBody.integer(1));
      const std::string text = searchText(unpacked(_selectBody.view(0), size));
      _insertText.run(number, text);
      bytes += size;
    }
    _selectBody.reset();
    _done.run(number);
    if (bytes > kBytesOfPortion) break;
  }
  return !numbers.empty();
}

bool SearchIndexer::isBehind(Database& database, std::uint64_t number) {
  Statement select(database, "SELECT 1 FROM unsearched WHERE report <= ? LIMIT 1");
  select.bind(number);
  return select.next();
}

}  // namespace zt::inbox
