// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/json/Json.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

namespace zt {

namespace {

using nlohmann::ordered_json;

constexpr std::size_t kDeepest = 1000;

std::string positionIn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  return "line " + std::to_string(line) + ", column " +
         std::to_string(before.size() - lineStart + 1);
}

/// Builds the value while the text is parsed, so that each error can name its position.
class Builder final : public nlohmann::json_sax<nlohmann::json> {
 public:
  Builder(std::string_view text, JsonDuplicates duplicates)
      : _text(text), _duplicates(duplicates) {}

  Json take() {
    if (_error) throw JsonError(*_error);
    return std::move(_root);
  }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override { return add(value); }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // not in JSON texts

  bool start_object(std::size_t /*size*/) override { return enter({true, {}, {}, {}}); }
  bool start_array(std::size_t /*size*/) override { return enter({}); }
  bool end_array() override { return leave(Json::array(std::move(_levels.back().values))); }
  bool end_object() override {
    Json object = Json::object();
    for (auto& [name, value] : _levels.back().members) object.append(name, std::move(value));
    return leave(std::move(object));
  }

  bool key(string_t& name) override {
    Level& level = _levels.back();
    level.key = name;
    if (_duplicates == JsonDuplicates::LastCounts || !level.members.contains(name)) return true;
    return fail(pointer() + ": stands twice in its object");
  }

  bool parse_error(std::size_t position, const std::string& lastToken,
                   const nlohmann::detail::exception& error) override {
    constexpr int kNumberOverflow = 406;
    if (error.id == kNumberOverflow) {
      return fail(withPointer(pointer(), lastToken + " is out of range"));
    }
    std::string message = positionIn(_text, position == 0 ? 0 : position - 1) + ": no JSON";
    const std::string what = error.what();
    if (const std::size_t detail = what.find(" - "); detail != std::string::npos) {
      message += " (" + what.substr(detail + 3) + ")";
    }
    _error.emplace(message, position);
    return false;
  }

 private:
  /// An array or object whose end has not been reached yet.
  struct Level {
    bool isObject = false;
    Json::Array values;
    std::map<std::string, Json> members;
    std::string key;  ///< of the member that is being read
  };

  std::string pointer() const {
    std::string path;
    for (const Level& level : _levels) {
      path = childPointer(path, level.isObject ? level.key : std::to_string(level.values.size()));
    }
    return path;
  }

  bool fail(const std::string& message) {
    _error.emplace(message);
    return false;
  }

  bool add(Json value) {
    if (_levels.empty()) {
      _root = std::move(value);
    } else if (_levels.back().isObject) {
      _levels.back().members[_levels.back().key] = std::move(value);
    } else {
      _levels.back().values.push_back(std::move(value));
    }
    return true;
  }
  bool enter(Level level) {
    if (_levels.size() == kDeepest) {
      return fail(pointer() + ": nested deeper than " + std::to_string(kDeepest) + " levels");
    }
    _levels.push_back(std::move(level));
    return true;
  }
  bool leave(Json value) {
    _levels.pop_back();
    return add(std::move(value));
  }

  std::string_view _text;
  JsonDuplicates _duplicates;
  Json _root;
  std::vector<Level> _levels;
  std::optional<JsonError> _error;
};

/// Converts to the JSON library's own type, which can be written.
ordered_json written(const Json& json) {
  if (json.isArray()) {
    ordered_json array = ordered_json::array();
    for (const Json& value : json.values()) array.push_back(written(value));
    return array;
  }
  if (json.isObject()) {
    ordered_json::object_t object;
    for (const auto& [name, value] : json.members()) object.emplace_back(name, written(value));
    return object;
  }
  if (json.isString()) return json.string();
  if (json.isBoolean()) return json.boolean();
  if (json.isUnsigned()) return json.unsignedInteger();
  if (json.isInteger()) return json.integer();
  if (json.isNumber()) return json.number();
  return nullptr;
}

}  // namespace

Json::Json(std::initializer_list<Member> members) : _value(Object(members)) {}

Json Json::array(Array values) {
  Json json;
  json._value = std::move(values);
  return json;
}

Json Json::object() {
  Json json;
  json._value = Object();
  return json;
}

Json& Json::operator[](std::string_view name) {
  auto& members = std::get<Object>(_value);
  const auto found = std::ranges::find(members, name, &Member::first);
  if (found != members.end()) return found->second;
  return members.emplace_back(std::string(name), Json()).second;
}

void Json::append(std::string name, Json value) {
  std::get<Object>(_value).emplace_back(std::move(name), std::move(value));
}

void Json::push_back(Json value) { std::get<Array>(_value).push_back(std::move(value)); }

void Json::sortMembers() { std::ranges::sort(std::get<Object>(_value), {}, &Member::first); }

std::int64_t Json::integer() const {
  const auto* const number = std::get_if<std::uint64_t>(&_value);
  return number != nullptr ? static_cast<std::int64_t>(*number) : std::get<std::int64_t>(_value);
}

double Json::number() const {
  if (isUnsigned()) return static_cast<double>(unsignedInteger());
  return isInteger() ? static_cast<double>(integer()) : std::get<double>(_value);
}

const Json* Json::find(std::string_view name) const {
  const auto found = std::ranges::find(members(), name, &Member::first);
  return found != members().end() ? &found->second : nullptr;
}

std::string Json::text(int indent) const {
  return written(*this).dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

std::string Json::asciiText() const {
  return written(*this).dump(-1, ' ', true, ordered_json::error_handler_t::replace);
}

Json parseJson(std::string_view text, JsonDuplicates duplicates) {
  Builder builder(text, duplicates);
  nlohmann::json::sax_parse(text, &builder);
  return builder.take();
}

std::string childPointer(const std::string& pointer, std::string_view token) {
  std::string child = pointer + "/";
  for (const char letter : token) {
    if (letter == '~') {
      child += "~0";
    } else if (letter == '/') {
      child += "~1";
    } else {
      child += letter;
    }
  }
  return child;
}

std::string withPointer(const std::string& pointer, const std::string& reason) {
  return pointer.empty() ? reason : pointer + ": " + reason;
}

}  // namespace zt
