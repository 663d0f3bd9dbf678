#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztreport/description/JsonText.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// A value of a description and the place where it stands. Reads it as what the library takes, and
/// raises `JsonError` with the JSON pointer when it is something else.
class JsonValue {
 public:
  JsonValue(const nlohmann::json& value, std::string pointer)
      : _value(&value), _pointer(std::move(pointer)) {}

  /// A string, or missing for null.
  ZtString string() const;
  /// A string that has to be there.
  std::string text() const;
  /// A moment, or missing for null.
  ZtDate date() const;
  std::int32_t integer() const;
  std::int64_t longInteger() const;
  /// Any number within a 32-bit float; one too small for it becomes zero.
  float real() const;
  bool boolean() const;
  /// true, false, or a number from -128 to 255, which is the byte.
  ZtBOOL booleanByte() const;
  /// A number without a sign, or a name that `nameOf` gives for a number below `count`.
  std::uint64_t enumeration(const std::function<ZtString(std::uint64_t)>& nameOf,
                            std::uint64_t count) const;
  std::vector<JsonValue> list() const;

  /// Calls `read` for every member of an object, by name. `read` says whether it knows the name;
  /// one that it does not is an error.
  void eachMember(const std::function<bool(const std::string&, const JsonValue&)>& read) const;
  /// The member `name` of an object, null pointer when it is absent.
  const nlohmann::json* member(const std::string& name) const;
  JsonValue child(const std::string& name, const nlohmann::json& value) const;

  const std::string& pointer() const { return _pointer; }
  [[noreturn]] void fail(const std::string& reason) const;

 private:
  std::int64_t integerBetween(std::int64_t smallest, std::int64_t largest) const;
  [[noreturn]] void expected(std::string_view what) const;

  const nlohmann::json* _value;
  std::string _pointer;
};

}  // namespace zt::tools
