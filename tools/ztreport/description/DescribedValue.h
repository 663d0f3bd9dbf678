#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/common/ParsedReport.h"
#include "tools/ztreport/description/DateSearch.h"
#include "tools/ztreport/description/Keys.h"

namespace zt::tools {

/// A part of a report that no description can have, and what would have had to stand there.
class Undescribable {
 public:
  Undescribable(std::size_t offset, std::string expected)
      : _offset(offset), _expected(std::move(expected)) {}

  std::size_t offset() const { return _offset; }  ///< in the report's text
  const std::string& expected() const { return _expected; }

 private:
  std::size_t _offset;
  std::string _expected;
};

/// Turns the values of a report into those of a description that are written as the same text
/// again. Raises `Undescribable` for one that is not.
class ValueDescriber {
 public:
  explicit ValueDescriber(const reader::ParsedReport& report) : _report(&report) {}

  /// A string, null for "(null)": a missing text and that text are written alike.
  Json text(std::string_view value) const;
  Json date(std::string_view value);
  Json integer(std::string_view value) const;
  Json real(std::string_view value) const;
  Json boolean(std::string_view value) const;
  /// The name, and one of the numbers without a name for the empty text.
  Json enumerator(std::string_view value, const Enumeration& enumeration) const;

  /// The value of a key, which stands in a report.
  Json valueOf(const KeyLine& key, std::string_view value);

  [[noreturn]] void fail(std::string_view part, std::string expected) const;

 private:
  const reader::ParsedReport* _report;
  DateSearch _dates;
};

/// The type of the field that a key's value stands in.
reader::FieldType fieldTypeOf(ValueForm form);

}  // namespace zt::tools
