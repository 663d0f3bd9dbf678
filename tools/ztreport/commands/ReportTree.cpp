// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/ReportTree.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "tools/common/Terminal.h"

namespace zt::tools {

namespace {

using ReportField = reader::Field;
using reader::FieldRange;
using reader::FieldType;

constexpr std::size_t kGap = 2;
constexpr std::size_t kIndent = 2;
constexpr std::size_t kWidestName = 40;      // a longer name pushes its value out of the column
constexpr std::size_t kNarrowestValue = 20;  // minimum, even in a narrower window

constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kDim = "\x1b[2m";
constexpr std::string_view kCyan = "\x1b[36m";
constexpr std::string_view kUsual = "\x1b[0m";

/// By `FieldType`.
constexpr std::array<std::string_view, 8> kTypeNames{
    {"string", "integer", "float", "boolean", "none", "array", "records", ""}};
constexpr std::size_t kTypeColumns = 7;

std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  while (!text.empty()) {
    const auto character = terminal::firstTerminalCharacter(text);
    columns += character.columns();
    text.remove_prefix(character.length());
  }
  return columns;
}

/// Fields of one list, shown one below the other.
struct Level {
  FieldRange::Iterator next;
  FieldRange::Iterator end;
  std::size_t indent;
  std::size_t nameColumns;
  std::size_t number = 0;  // of the last record, in a list of them
  std::string label{};     // before the first line: the number of a record
};

class TreeWriter {
 public:
  explicit TreeWriter(const terminal::TerminalStyle& style) : _style(style) {}

  std::string text() && { return std::move(_text); }

  void addHead(std::string_view label, std::string_view value) {
    constexpr std::size_t kLabelColumns = 11;
    addColumn(label, kLabelColumns, kCyan, !value.empty());
    addValue(value);
    endLine();
  }

  void addPool(const reader::ParsedReport& report, const reader::Pool& pool) {
    endLine();
    addColumn(pool.type, 0, kBold, true);
    addValue(pool.date);
    endLine();
    addFields(report.fieldsOf(pool));
  }

 private:
  void addFields(const FieldRange& fields) {
    open(fields, kIndent);
    while (!_levels.empty()) {
      Level& level = _levels.back();
      if (level.next == level.end) {
        _levels.pop_back();
        continue;
      }
      const ReportField& field = *level.next;
      ++level.next;
      if (field.type == FieldType::Record) {
        addRecord(field, level);
      } else {
        addField(field, level);
      }
    }
  }

  void open(const FieldRange& fields, std::size_t indent) {
    std::size_t columns = 0;
    for (const ReportField& field : fields) {
      columns = std::max(columns, std::min(columnsOf(field.name), kWidestName));
    }
    _levels.push_back({fields.begin(), fields.end(), indent, columns});
  }

  void addRecord(const ReportField& record, Level& level) {
    const std::string label = std::to_string(++level.number);
    const std::size_t indent = level.indent;
    if (fieldsOf(record).empty()) {
      addBlanks(indent);
      addStyled(label, kDim);
      endLine();
      return;
    }
    open(fieldsOf(record), indent + label.size() + kGap);
    _levels.back().label = label;
  }

  void addField(const ReportField& field, Level& level) {
    addBlanks(level.indent - (level.label.empty() ? 0 : level.label.size() + kGap));
    if (!level.label.empty()) {
      addStyled(level.label, kDim);
      addBlanks(kGap);
      level.label.clear();
    }
    const bool holdsFields = field.type == FieldType::Array || field.type == FieldType::Records;
    addColumn(field.name, level.nameColumns, kCyan, true);
    addColumn(kTypeNames[static_cast<std::size_t>(field.type)], kTypeColumns, kDim,
              holdsFields || !field.value.empty());
    if (!holdsFields) {
      addValue(field.value);
      endLine();
      return;
    }
    const FieldRange fields = fieldsOf(field);
    std::size_t count = 0;
    for (auto next = fields.begin(); next != fields.end(); ++next) ++count;
    addValue(std::to_string(count));
    endLine();
    open(fields, level.indent + kIndent);
  }

  /// A cell and, if another one follows, the blanks up to it.
  void addColumn(std::string_view text, std::size_t columns, std::string_view style, bool more) {
    const std::size_t before = _column;
    addStyled(text, style);
    if (!more) return;
    const std::size_t used = _column - before;
    addBlanks((used < columns ? columns - used : 0) + kGap);
  }

  void addStyled(std::string_view text, std::string_view style) {
    if (_style.hasColours) _text += style;
    while (!text.empty()) {
      const auto character = terminal::firstTerminalCharacter(text);
      add(character);
      text.remove_prefix(character.length());
    }
    if (_style.hasColours) _text += kUsual;
  }

  /// A value, in lines that all start in the current column.
  void addValue(std::string_view value) {
    const std::size_t begin = _column;
    const std::size_t available =
        _style.columns > begin + kNarrowestValue ? _style.columns - begin : kNarrowestValue;
    const bool isMissing = value == "(null)" && _style.hasColours;
    if (isMissing) _text += kDim;
    while (!value.empty()) {
      const auto character = terminal::firstTerminalCharacter(value);
      const bool isFull = _column > begin && _column + character.columns() > begin + available;
      if (_style.columns != 0 && isFull) startLineAt(begin);
      const bool endsLine =
          value.front() == '\n' || (value.front() == '\r' && !value.starts_with("\r\n"));
      add(character);
      value.remove_prefix(character.length());
      if (endsLine && !value.empty()) startLineAt(begin);
    }
    if (isMissing) _text += kUsual;
  }

  void add(const terminal::TerminalCharacter& character) {
    _text += character.text();
    _column += character.columns();
  }

  void addBlanks(std::size_t count) {
    _text.append(count, ' ');
    _column += count;
  }
  void endLine() {
    _text += '\n';
    _column = 0;
  }
  void startLineAt(std::size_t column) {
    endLine();
    addBlanks(column);
  }

  terminal::TerminalStyle _style;
  std::string _text;
  std::size_t _column = 0;
  std::vector<Level> _levels;  // no recursion: nesting may be deeper than the stack
};

}  // namespace

std::string reportTree(const reader::ParsedReport& report, const terminal::TerminalStyle& style) {
  if (report.form == reader::Form::Empty) return "a report without pools, which has no text\n";
  TreeWriter tree(style);
  tree.addHead("report", report.reportId);
  tree.addHead("machine", report.machineId);
  tree.addHead("customer", report.customerId);
  tree.addHead("application", report.applicationId);
  tree.addHead("version", report.applicationVersion);
  tree.addHead("form", report.form == reader::Form::Soap ? "SOAP request" : "plain XML");
  for (const reader::Pool& pool : report.pools) tree.addPool(report, pool);
  return std::move(tree).text();
}

}  // namespace zt::tools
