#include "tools/ztreport/description/JsonText.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <vector>

namespace zt::tools {

namespace {

constexpr std::size_t kDeepest = 1000;

std::string positionIn(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, std::min(offset, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  return "line " + std::to_string(line) + ", column " +
         std::to_string(before.size() - lineStart + 1);
}

/// Goes through a text once before it is read, and knows at any point where it is.
class Checker final : public nlohmann::json_sax<nlohmann::json> {
 public:
  explicit Checker(std::string_view text) : _text(text) {}

  const std::string& error() const { return _error; }

  bool null() override { return nextElement(); }
  bool boolean(bool /*value*/) override { return nextElement(); }
  bool number_integer(number_integer_t /*value*/) override { return nextElement(); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return nextElement(); }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
    return nextElement();
  }
  bool string(string_t& /*value*/) override { return nextElement(); }
  bool binary(binary_t& /*value*/) override { return nextElement(); }

  bool start_object(std::size_t /*size*/) override { return enter(Level{}); }
  bool end_object() override { return leave(); }
  bool start_array(std::size_t /*size*/) override {
    Level level;
    level.index = 0;
    return enter(level);
  }
  bool end_array() override { return leave(); }

  bool key(string_t& name) override {
    Level& level = _levels.back();
    level.key = name;
    if (level.names.insert(name).second) return true;
    _error = pointer() + ": stands twice in its object";
    return false;
  }

  bool parse_error(std::size_t position, const std::string& lastToken,
                   const nlohmann::detail::exception& error) override {
    constexpr int kNumberOverflow = 406;
    if (error.id == kNumberOverflow) {
      _error = placed(pointer(), lastToken + " is out of range");
      return false;
    }
    _error = positionIn(_text, position == 0 ? 0 : position - 1) + ": no JSON";
    const std::string what = error.what();
    if (const std::size_t detail = what.find(" - "); detail != std::string::npos) {
      _error += " (" + what.substr(detail + 3) + ")";
    }
    return false;
  }

 private:
  struct Level {
    std::optional<std::size_t> index;  // in an array
    std::string key;                   // in an object
    std::set<std::string> names;
  };

  std::string pointer() const {
    std::string path;
    for (const Level& level : _levels) {
      path = childPointer(path, level.index ? std::to_string(*level.index) : level.key);
    }
    return path;
  }

  bool nextElement() {
    if (!_levels.empty() && _levels.back().index) ++*_levels.back().index;
    return true;
  }
  bool enter(const Level& level) {
    if (_levels.size() == kDeepest) {
      _error = pointer() + ": nested deeper than " + std::to_string(kDeepest) + " levels";
      return false;
    }
    _levels.push_back(level);
    return true;
  }
  bool leave() {
    _levels.pop_back();
    return nextElement();
  }

  std::string_view _text;
  std::vector<Level> _levels;
  std::string _error;
};

}  // namespace

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

std::string placed(const std::string& pointer, const std::string& reason) {
  return pointer.empty() ? reason : pointer + ": " + reason;
}

nlohmann::json parseJson(const std::string& text) {
  Checker checker(text);
  if (!nlohmann::json::sax_parse(text, &checker)) throw JsonError(checker.error());
  return nlohmann::json::parse(text);
}

}  // namespace zt::tools
