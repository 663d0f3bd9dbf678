#include "tools/ztreport/description/DescribedPool.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "tools/ztreport/description/PoolLayout.h"

namespace zt::tools {

namespace {

using reader::Field;
using reader::FieldRange;
using reader::FieldType;
using reader::Pool;

/// How many arrays may be around a field, so that its description is not nested too deep to be
/// read.
constexpr std::size_t kDeepest = 497;

constexpr const char* kNoRecords =
    "an array that a generic field can be (its name ends with </Date>)";

Json describedFields(const FieldRange& fields, ValueDescriber& values, std::size_t depth);

Json describedField(const Field& field, ValueDescriber& values, std::size_t depth) {
  Json described{{"name", values.text(field.name)}};
  switch (field.type) {
    case FieldType::String:
      described["type"] = "string";
      described["value"] = values.text(field.value);
      break;
    case FieldType::Integer:
      described["type"] = "integer";
      described["value"] = values.integer(field.value);
      break;
    case FieldType::Float:
      described["type"] = "float";
      described["value"] = values.real(field.value);
      break;
    case FieldType::Boolean:
      described["type"] = "boolean";
      described["value"] = values.boolean(field.value);
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
      values.fail(field.name, kNoRecords);
  }
  return described;
}

Json describedFields(const FieldRange& fields, ValueDescriber& values, std::size_t depth) {
  Json list = Json::array();
  for (const Field& field : fields) {
    if (depth > kDeepest) {
      values.fail(field.name, "no field in more than " + std::to_string(kDeepest) + " arrays");
    }
    list.push_back(describedField(field, values, depth));
  }
  return list;
}

/// Takes the fields of a typed pool or of a record in their order.
class LayoutReader {
 public:
  /// `place` is where all of it stands, for what is not there.
  LayoutReader(const FieldRange& fields, std::string_view place, ValueDescriber& values)
      : _next(fields.begin()), _end(fields.end()), _place(place), _values(&values) {}

  void takeValues(std::span<const KeyLine> keys, Json& described) {
    for (const KeyLine& key : keys) {
      if (key.field.empty()) continue;
      const Field& field = take(fieldTypeOf(key.form), key.field);
      described[key.name] = _values->valueOf(key, field.value);
    }
  }

  void takeRecords(const PoolPiece& piece, Json& described) {
    if (atEnd() || _next->type != FieldType::Records || _next->name != piece.field) return;
    const Field& list = *_next;
    Json records = Json::array();
    for (const Field& record : fieldsOf(list)) {
      Json members = Json::object();
      LayoutReader fields(fieldsOf(record), record.name, *_values);
      fields.takeValues(piece.lines, members);
      fields.expectEnd();
      records.push_back(std::move(members));
    }
    if (records.values().empty()) _values->fail(list.name, "a list with records");
    described[piece.name] = std::move(records);
    ++_next;
  }

  void takeFalse(std::string_view name) {
    const Field& field = take(FieldType::Boolean, name);
    if (field.value != "FALSE") _values->fail(field.value, "FALSE");
  }

  /// What is left.
  FieldRange rest() const { return {_next.get(), _end.get()}; }

 private:
  bool atEnd() const { return _next == _end; }

  const Field& take(FieldType type, std::string_view name) {
    if (atEnd() || _next->type != type || _next->name != name) {
      _values->fail(atEnd() ? _place : _next->name, "the field " + std::string(name));
    }
    const Field& field = *_next;
    ++_next;
    return field;
  }

  void expectEnd() const {
    if (!atEnd()) _values->fail(_next->name, "no more fields in this record");
  }

  FieldRange::Iterator _next;
  FieldRange::Iterator _end;
  std::string_view _place;
  ValueDescriber* _values;
};

Json describedAs(const PoolLayout& layout, const reader::ParsedReport& report, const Pool& pool,
                 ValueDescriber& values) {
  if (pool.isEmptyTag) values.fail(pool.type, "a pool with the fields of its type");
  Json described{{"kind", layout.kind}, {"timeStamp", values.date(pool.date)}};
  LayoutReader fields(report.fieldsOf(pool), pool.type, values);
  for (const PoolPiece& piece : layout.pieces) {
    switch (piece.kind) {
      case PoolPiece::Kind::Values:
        fields.takeValues(piece.lines, described);
        break;
      case PoolPiece::Kind::Records:
        fields.takeRecords(piece, described);
        break;
      case PoolPiece::Kind::False:
        fields.takeFalse(piece.field);
        break;
    }
  }
  if (!fields.rest().empty()) described["fields"] = describedFields(fields.rest(), values, 0);
  return described;
}

Json describedAsGeneric(const reader::ParsedReport& report, const Pool& pool,
                        ValueDescriber& values) {
  const FieldRange fields = report.fieldsOf(pool);
  if (fields.empty() && !pool.isEmptyTag) values.fail(pool.type, "a pool with fields");
  return {{"kind", "generic"},
          {"poolType", values.text(pool.type)},
          {"timeStamp", values.date(pool.date)},
          {"fields", describedFields(fields, values, 0)}};
}

}  // namespace

Json describedPool(const reader::ParsedReport& report, const Pool& pool, ValueDescriber& values) {
  const PoolLayout* const layout = layoutOfType(pool.type);
  if (layout == nullptr) return describedAsGeneric(report, pool, values);
  try {
    return describedAs(*layout, report, pool, values);
  } catch (const Undescribable& asTyped) {
    try {
      return describedAsGeneric(report, pool, values);
    } catch (const Undescribable& asGeneric) {
      // Where the reading got further, it was on the right track.
      throw asTyped.offset() < asGeneric.offset() ? asGeneric : asTyped;
    }
  }
}

}  // namespace zt::tools
