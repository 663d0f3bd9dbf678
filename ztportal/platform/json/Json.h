// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace zt {

/// A text that is not JSON or is not accepted. The message names the position: line and column of a
/// syntax error, or the JSON pointer (RFC 6901) of a wrong value.
class JsonError : public std::runtime_error {
 public:
  explicit JsonError(const std::string& message, std::optional<std::size_t> byte = std::nullopt)
      : std::runtime_error(message), _byte(byte) {}

  /// For a syntax error: how many bytes were read.
  std::optional<std::size_t> byte() const { return _byte; }

 private:
  std::optional<std::size_t> _byte;
};

/// A JSON value (RFC 8259). The members of an object keep the order in which they were added.
///
///     Json report{{"number", 7}, {"result", nullptr}};
///     report["pools"] = Json::array();
///     report["pools"].push_back("EXECUTION");
///     report.text();    // {"number":7,"result":null,"pools":["EXECUTION"]}
class Json {
 public:
  using Member = std::pair<std::string, Json>;
  using Array = std::vector<Json>;
  using Object = std::vector<Member>;

  // Implicit, so that values can be written as literals.
  // NOLINTBEGIN(google-explicit-constructor)
  Json(std::nullptr_t = nullptr) {}
  Json(bool value) : _value(value) {}
  template <std::signed_integral Number>
  Json(Number value) : _value(std::int64_t{value}) {}
  template <std::unsigned_integral Number>
  Json(Number value) : _value(std::uint64_t{value}) {}
  Json(double value) : _value(value) {}
  Json(std::string value) : _value(std::move(value)) {}
  Json(std::string_view value) : _value(std::string(value)) {}
  Json(const char* value) : _value(std::string(value)) {}
  Json(std::initializer_list<Member> members);  ///< an object
  template <class Value>
  Json(const std::optional<Value>& value) {
    if (value) *this = Json(*value);
  }
  // NOLINTEND(google-explicit-constructor)
  static Json array(Array values = {});
  static Json object();

  /// The member `name` of an object, which is added if it is absent.
  Json& operator[](std::string_view name);
  void push_back(Json value);
  /// Adds a member whose name the object does not have.
  void append(std::string name, Json value);
  /// Sorts the members of an object by the bytes of their names.
  void sortMembers();

  bool isNull() const { return holds<std::nullptr_t>(); }
  bool isBoolean() const { return holds<bool>(); }
  bool isString() const { return holds<std::string>(); }
  bool isArray() const { return holds<Array>(); }
  bool isObject() const { return holds<Object>(); }
  bool isNumber() const { return isInteger() || holds<double>(); }
  bool isInteger() const { return isUnsigned() || holds<std::int64_t>(); }
  /// A parsed number is unsigned if it has no sign.
  bool isUnsigned() const { return holds<std::uint64_t>(); }

  // The value, which must be of the function's kind.
  bool boolean() const { return std::get<bool>(_value); }
  const std::string& string() const { return std::get<std::string>(_value); }
  const Array& values() const { return std::get<Array>(_value); }
  const Object& members() const { return std::get<Object>(_value); }
  std::uint64_t unsignedInteger() const { return std::get<std::uint64_t>(_value); }
  std::int64_t integer() const;
  double number() const;
  /// The member `name` of an object; a null pointer if it is absent.
  const Json* find(std::string_view name) const;

  /// The JSON text, on one line or indented by `indent` spaces. Bytes that are not UTF-8 become
  /// U+FFFD.
  std::string text(int indent = -1) const;
  /// The JSON text on one line, with all characters beyond ASCII escaped.
  std::string asciiText() const;

 private:
  template <class Kind>
  bool holds() const {
    return std::holds_alternative<Kind>(_value);
  }

  std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, Array,
               Object>
      _value;
};

/// How a name is treated that occurs twice in one object.
enum class JsonDuplicates { Error, LastCounts };

/// Parses `text` (UTF-8); the members of each object are sorted by name. Throws JsonError, also for
/// numbers out of range and for nesting deeper than 1,000 levels.
Json parseJson(std::string_view text, JsonDuplicates duplicates = JsonDuplicates::Error);

/// The JSON pointer `pointer` with `token` added and escaped.
std::string childPointer(const std::string& pointer, std::string_view token);

/// "/pools/0: reason", or only the reason for the empty pointer, which means the whole document.
std::string withPointer(const std::string& pointer, const std::string& reason);

}  // namespace zt
