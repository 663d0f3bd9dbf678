#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tools/common/Report.h"
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
  explicit ValueDescriber(const reader::Report& report) : _report(&report) {}

  /// A string, null for "(null)": a missing text and that text are written alike.
  nlohmann::ordered_json text(std::string_view value) const;
  nlohmann::ordered_json date(std::string_view value);
  nlohmann::ordered_json integer(std::string_view value) const;
  nlohmann::ordered_json real(std::string_view value) const;
  nlohmann::ordered_json boolean(std::string_view value) const;
  /// The name, and one of the numbers without a name for the empty text.
  nlohmann::ordered_json enumerator(std::string_view value, const Enumeration& enumeration) const;

  /// The value of a key, which stands in a report.
  nlohmann::ordered_json valueOf(const KeyLine& key, std::string_view value);

  [[noreturn]] void fail(std::string_view part, std::string expected) const;

 private:
  const reader::Report* _report;
  DateSearch _dates;
};

/// The type of the field that a key's value stands in.
reader::FieldType fieldTypeOf(ValueForm form);

}  // namespace zt::tools
