// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/json/Json.h"

namespace zt {

/// A value of a description and its JSON pointer. Reads the value as a type of the library; throws
/// `JsonError` with the pointer for any other kind of value.
class JsonValue {
 public:
  JsonValue(const Json& value, std::string pointer)
      : _value(&value), _pointer(std::move(pointer)) {}

  /// A string, or missing for null.
  ZtString string() const;
  /// A string; null is an error.
  std::string text() const;
  /// A timestamp, or missing for null.
  ZtDate date() const;
  std::int32_t integer() const;
  std::int64_t longInteger() const;
  /// Any number within the range of a 32-bit float; one too close to zero becomes zero.
  float real() const;
  bool boolean() const;
  /// true, false, or the byte as a number from -128 to 255.
  ZtBOOL booleanByte() const;
  /// A number without a sign, or the name that `nameOf` returns for a number below `count`.
  std::uint64_t enumeration(const std::function<ZtString(std::uint64_t)>& nameOf,
                            std::uint64_t count) const;
  std::vector<JsonValue> list() const;

  /// Calls `read` for every member of an object, in the order of their names. `read` returns
  /// whether it knows the name; an unknown name is an error.
  void eachMember(const std::function<bool(const std::string&, const JsonValue&)>& read) const;
  /// The member `name` of an object; a null pointer if it is absent.
  const Json* member(const std::string& name) const;
  JsonValue child(const std::string& name, const Json& value) const;

  const std::string& pointer() const { return _pointer; }
  [[noreturn]] void fail(const std::string& reason) const;

 private:
  std::int64_t integerBetween(std::int64_t smallest, std::int64_t largest) const;
  [[noreturn]] void expected(std::string_view what) const;

  const Json* _value;
  std::string _pointer;
};

}  // namespace zt
