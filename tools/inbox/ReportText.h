#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zt::inbox {

/// A field of a pool. What an array holds follows it, one deeper.
struct ReportField {
  std::size_t depth = 0;
  std::size_t group = 0;  ///< which group of fields of its array it stands in: a step, a record
  std::string_view type;  ///< "string", "array", …; "none" for a field without a value
  std::string_view name;
  std::string_view value;

  bool isArray() const { return type == "array"; }
};

struct ReportPool {
  std::string_view type;
  std::string_view date;
  std::vector<ReportField> fields;  ///< in the order of the report
};

/// The pools of a report: views into its text, the bytes as they stand there.
struct ReportText {
  std::vector<ReportPool> pools;
  bool complete = true;  ///< else there is more in the report than is read of it
};

inline constexpr std::size_t kMostReportFields = 100'000;  ///< later ones are left out
inline constexpr std::size_t kDeepestReportField = 32;     ///< deeper ones stand at this depth

/// Reads the pools out of a report's text. Names and values are written into reports without
/// escaping, and the end tags of generic arrays do not match their start tags, so a report is often
/// no well-formed XML. It is read by its lines and their indentation, each tag standing at the
/// beginning of one; a value of several lines ends where the end tags of its field follow. What is
/// written otherwise gives no pools. Takes time in proportion to the report's length, whatever it
/// holds.
ReportText readReportText(std::string_view report);

}  // namespace zt::inbox
