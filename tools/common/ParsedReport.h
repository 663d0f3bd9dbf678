// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zt::reader {

/// The form in which a report is written.
enum class Form {
  Soap,   ///< the request that is posted
  Plain,  ///< XML without the envelope and the types
  Empty   ///< no text: a report without pools
};

enum class FieldType {
  String,
  Integer,
  Float,
  Boolean,
  None,     ///< a bare field: a name without a value
  Array,    ///< a generic array of fields
  Records,  ///< a list of records in a typed pool
  Record    ///< one record of such a list: a group of fields without a name
};

/// A field of a report's text. All strings are views into that text and are not decoded: "(null)"
/// may be a missing string or these six characters.
struct Field {
  FieldType type = FieldType::None;
  std::string_view name;
  std::string_view value;  ///< only for the first four types
  /// Whether an empty array is written as "<Fields/>" and not as a start and an end tag.
  bool isEmptyTag = false;
  /// How many entries of `ParsedReport::fields` belong to it, including itself.
  std::size_t size = 1;
};

/// Sibling fields in a report's list, without the fields nested in them.
class FieldRange {
 public:
  class Iterator {
   public:
    explicit Iterator(const Field* field) : _field(field) {}
    const Field& operator*() const { return *_field; }
    const Field* operator->() const { return _field; }
    const Field* get() const { return _field; }
    Iterator& operator++() {
      _field += _field->size;
      return *this;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    const Field* _field;
  };

  FieldRange(const Field* begin, const Field* end) : _begin(begin), _end(end) {}
  Iterator begin() const { return Iterator(_begin); }
  Iterator end() const { return Iterator(_end); }
  bool empty() const { return _begin == _end; }

 private:
  const Field* _begin;
  const Field* _end;
};

/// The fields of an array or record, or the records of a list of records. `field` must be an
/// element of a report's list, not a copy.
inline FieldRange fieldsOf(const Field& field) { return {&field + 1, &field + field.size}; }

struct Pool {
  std::string_view type;
  std::string_view date;
  bool isEmptyTag = false;  ///< as in `Field::isEmptyTag`
  std::size_t begin = 0;    ///< its range in `ParsedReport::fields`
  std::size_t end = 0;
};

/// The content of a report's text. The text must outlive it.
///
///     for (const Pool& pool : report.pools) {
///       for (const Field& field : report.fieldsOf(pool)) use(field.name, field.value);
///     }
struct ParsedReport {
  std::string_view text;
  Form form = Form::Empty;
  std::string_view reportId;
  std::string_view machineId;
  std::string_view customerId;
  std::string_view applicationId;
  std::string_view applicationVersion;
  std::vector<Pool> pools;
  /// All fields of all pools in the order of the text, each array before its content. The list is
  /// flat, so that deep nesting cannot overflow the stack.
  std::vector<Field> fields;
  /// The types of the pools after an error in an earlier pool (see readReportUpToFault()).
  std::vector<std::string_view> laterPools;

  FieldRange fieldsOf(const Pool& pool) const {
    return {fields.data() + pool.begin, fields.data() + pool.end};
  }
  /// Where a view into the text starts.
  std::size_t offsetOf(std::string_view part) const {
    return static_cast<std::size_t>(part.data() - text.data());
  }
};

}  // namespace zt::reader
