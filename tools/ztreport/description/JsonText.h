#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zt::tools {

/// A JSON text that is no JSON, or that says something twice. The message names the place: line
/// and column of a wrong letter, the JSON pointer (RFC 6901) of a wrong value.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// `pointer` with `token` added, escaped as RFC 6901 wants it.
std::string childPointer(const std::string& pointer, std::string_view token);

/// `reason` behind its place. The whole document's pointer is empty and says nothing.
std::string placed(const std::string& pointer, const std::string& reason);

/// Parses `text` (RFC 8259, UTF-8). Raises `JsonError`, also for a name that stands twice in one
/// object, for numbers beyond every range and for nesting deeper than 1,000 levels.
nlohmann::json parseJson(const std::string& text);

}  // namespace zt::tools
