// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/description/DescribedReport.h"

#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/common/LineCursor.h"
#include "tools/ztreport/description/DateSearch.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/pools/FieldTable.h"

namespace zt::tools {

namespace {

using reader::FieldRange;
using reader::FieldType;
using reader::Pool;
using ReportField = reader::Field;

constexpr std::string_view kNull = "(null)";

/// How many arrays may enclose a field: `parseJson` reads no deeper nesting of its description.
constexpr std::size_t kDeepest = 497;

/// A part of a report that no description can express, and what was expected in its place.
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

/// A float as reports have it: two digits after the point.
std::string writtenReal(float number) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(),
                                 static_cast<double>(number), std::chars_format::fixed, 2);
  return {text.data(), end.ptr};
}

/// Turns the values of a report into those of a description, which are written as the same text
/// again. Throws `Undescribable` for a value that a description cannot express.
class ValueDescriber {
 public:
  explicit ValueDescriber(const reader::ParsedReport& report) : _report(&report) {}

  /// A string, or null for "(null)": a missing string and that string look the same in a report.
  Json text(std::string_view value) const {
    if (value == kNull) return nullptr;
    for (std::string_view rest = value; !rest.empty();) {
      const auto character = firstUtf8Character(rest);
      if (!character) fail(rest, "UTF-8");
      rest.remove_prefix(character->length);
    }
    return value;
  }

  Json date(std::string_view value) {
    if (value == kNull) return nullptr;
    std::optional<std::string> timestamp = _dates.timestampOf(value);
    if (!timestamp) fail(value, "a date as this time zone and language write it");
    return *std::move(timestamp);
  }

  Json integer(std::string_view value) const {
    const auto number = parseNumber<std::int32_t>(value);
    if (!number || std::to_string(*number) != value) fail(value, "a 32-bit integer");
    return *number;
  }

  Json real(std::string_view value) const {
    const auto number = parseNumber<double>(value);
    if (!number || !std::isfinite(static_cast<float>(*number)) ||
        writtenReal(static_cast<float>(*number)) != value) {
      fail(value, "a 32-bit float with two digits after the point");
    }
    return *number;
  }

  Json boolean(std::string_view value) const {
    if (value == "TRUE") return true;
    if (value == "FALSE") return false;
    fail(value, "TRUE or FALSE");
  }

  /// The name, or for the empty text a number without a name.
  Json enumerator(std::string_view value, const Enumeration& enumeration) const {
    if (value.empty()) return enumeration.unnamed;
    for (std::uint64_t number = 0; number < enumeration.count; ++number) {
      if (enumeration.nameOf(number) == value) return value;
    }
    fail(value, "a name that reports have, or none");
  }

  [[noreturn]] void fail(std::string_view part, std::string expected) const {
    throw Undescribable(_report->offsetOf(part), std::move(expected));
  }

 private:
  const reader::ParsedReport* _report;
  DateSearch _dates;
};

// Generic fields and pools.

Json describedFields(const FieldRange& fields, ValueDescriber& values, std::size_t depth);

Json describedField(const ReportField& field, ValueDescriber& values, std::size_t depth) {
  Json described{{"name", values.text(field.name)}};
  const auto describe = [&](const char* type, Json value) {
    described["type"] = type;
    described["value"] = std::move(value);
  };
  switch (field.type) {
    case FieldType::String:
      describe("string", values.text(field.value));
      break;
    case FieldType::Integer:
      describe("integer", values.integer(field.value));
      break;
    case FieldType::Float:
      describe("float", values.real(field.value));
      break;
    case FieldType::Boolean:
      describe("boolean", values.boolean(field.value));
      break;
    case FieldType::None:
      described["type"] = "none";
      break;
    case FieldType::Array:
      if (fieldsOf(field).empty() && !field.isEmptyTag) {
        values.fail(field.name, "an array with fields");
      }
      described["type"] = "array";
      described["fields"] = describedFields(fieldsOf(field), values, depth + 1);
      break;
    case FieldType::Records:
    case FieldType::Record:
      values.fail(field.name, "an array that a generic field can be (its name ends with </Date>)");
  }
  return described;
}

Json describedFields(const FieldRange& fields, ValueDescriber& values, std::size_t depth) {
  Json list = Json::array();
  for (const ReportField& field : fields) {
    if (depth > kDeepest) {
      values.fail(field.name, "no field in more than " + std::to_string(kDeepest) + " arrays");
    }
    list.push_back(describedField(field, values, depth));
  }
  return list;
}

Json describedAsGeneric(const reader::ParsedReport& report, const Pool& pool,
                        ValueDescriber& values) {
  const FieldRange fields = report.fieldsOf(pool);
  if (fields.empty() && !pool.isEmptyTag) values.fail(pool.type, "a pool with fields");
  return {{"kind", Fields<ZtPortalPool>::kKind},
          {"poolType", values.text(pool.type)},
          {"timeStamp", values.date(pool.date)},
          {"fields", describedFields(fields, values, 0)}};
}

// Typed pools.

/// Reads the fields of a typed pool or of a record in the order of their table.
class TableReader {
 public:
  /// `place` is the part of the report that an error names if a field is missing at the end.
  TableReader(const FieldRange& fields, std::string_view place, ValueDescriber& values)
      : _next(fields.begin()), _end(fields.end()), _place(place), _values(&values) {}

  template <class Object>
  void takeFields(Json& described) {
    eachField<Object>([this, &described](const auto& row) { this->takeRow(row, described); });
  }

  void expectEnd() const {
    if (!atEnd()) _values->fail(_next->name, "no more fields in this record");
  }
  FieldRange rest() const { return {_next.get(), _end.get()}; }

 private:
  void takeRow(const FalseField& row, Json& /*described*/) {
    const std::string_view value = take(FieldType::Boolean, row.wireName);
    if (value != "FALSE") _values->fail(value, "FALSE");
  }
  template <class Owner, class Member>
  void takeRow(const Field<Owner, Member, false>& /*row*/, Json& /*described*/) {}
  template <class Owner, class Member>
  void takeRow(const Field<Owner, Member, true>& row, Json& described) {
    if constexpr (requires { typename RecordOf<Member>::Type; }) {
      takeRecords<typename RecordOf<Member>::Type>(row.key, row.wireName, described);
    } else {
      described[std::string(row.key)] = takeValue<Member>(row.wireName, row.enumeration);
    }
  }

  template <class Member>
  Json takeValue(std::string_view name, const Enumeration* enumeration) {
    if constexpr (std::same_as<Member, std::int32_t>) {
      return _values->integer(take(FieldType::Integer, name));
    } else if constexpr (std::same_as<Member, ZtBOOL>) {
      return _values->boolean(take(FieldType::Boolean, name));
    } else if constexpr (std::same_as<Member, std::uint64_t>) {
      return _values->enumerator(take(FieldType::String, name), *enumeration);
    } else if constexpr (std::same_as<Member, ZtAtomic<ZtDate>>) {
      return _values->date(take(FieldType::String, name));
    } else {
      static_assert(std::same_as<Member, ZtAtomic<ZtString>>);
      return _values->text(take(FieldType::String, name));
    }
  }

  /// Reads a list of records, which is absent if there is no record.
  template <class Record>
  void takeRecords(std::string_view key, std::string_view name, Json& described) {
    if (atEnd() || _next->type != FieldType::Records || _next->name != name) return;
    const ReportField& list = *_next;
    Json records = Json::array();
    for (const ReportField& record : fieldsOf(list)) {
      Json members = Json::object();
      TableReader fields(fieldsOf(record), record.name, *_values);
      fields.takeFields<Record>(members);
      fields.expectEnd();
      records.push_back(std::move(members));
    }
    if (records.values().empty()) _values->fail(list.name, "a list with records");
    described[std::string(key)] = std::move(records);
    ++_next;
  }

  bool atEnd() const { return _next == _end; }

  /// Reads the value of the next field, which must have this type and name.
  std::string_view take(FieldType type, std::string_view name) {
    if (atEnd() || _next->type != type || _next->name != name) {
      _values->fail(atEnd() ? _place : _next->name, "the field " + std::string(name));
    }
    const std::string_view value = _next->value;
    ++_next;
    return value;
  }

  FieldRange::Iterator _next;
  FieldRange::Iterator _end;
  std::string_view _place;
  ValueDescriber* _values;
};

template <class TypedPool>
Json describedAs(const reader::ParsedReport& report, const Pool& pool, ValueDescriber& values) {
  if (pool.isEmptyTag) values.fail(pool.type, "a pool with the fields of its type");
  Json described{{"kind", Fields<TypedPool>::kKind}, {"timeStamp", values.date(pool.date)}};
  TableReader fields(report.fieldsOf(pool), pool.type, values);
  fields.takeFields<TypedPool>(described);
  if (!fields.rest().empty()) described["fields"] = describedFields(fields.rest(), values, 0);
  return described;
}

using Describe = Json (*)(const reader::ParsedReport&, const Pool&, ValueDescriber&);

/// The function that describes pools of this type; null for a type without a typed pool.
Describe typedDescriber(std::string_view type) {
  Describe describe = nullptr;
  eachPoolClass([&]<class TypedPool> {
    if constexpr (!std::same_as<TypedPool, ZtPortalPool>) {
      if (Fields<TypedPool>::kType == type) describe = describedAs<TypedPool>;
    }
  });
  return describe;
}

/// Describes a pool as the typed pool of its type if it has exactly the fields of that, or else as
/// a generic one.
Json describedPool(const reader::ParsedReport& report, const Pool& pool, ValueDescriber& values) {
  const Describe describeTyped = typedDescriber(pool.type);
  if (describeTyped == nullptr) return describedAsGeneric(report, pool, values);
  try {
    return describeTyped(report, pool, values);
  } catch (const Undescribable& asTyped) {
    try {
      return describedAsGeneric(report, pool, values);
    } catch (const Undescribable& asGeneric) {
      // The attempt that read more of the pool is more likely the right one.
      throw asTyped.offset() < asGeneric.offset() ? asGeneric : asTyped;
    }
  }
}

}  // namespace

Json describedReport(const reader::ParsedReport& report) try {
  Json described = Json::object();
  ValueDescriber values(report);
  if (report.form != reader::Form::Empty) {
    described["customerId"] = values.text(report.customerId);
    described["applicationId"] = values.text(report.applicationId);
    described["applicationVersion"] = values.text(report.applicationVersion);
  }
  Json& pools = described["pools"] = Json::array();
  for (const Pool& pool : report.pools) {
    pools.push_back(describedPool(report, pool, values));
  }
  return described;
} catch (const Undescribable& part) {
  throw reader::ReadError(reader::placeIn(report.text, part.offset()),
                          "expected " + part.expected());
}

}  // namespace zt::tools
