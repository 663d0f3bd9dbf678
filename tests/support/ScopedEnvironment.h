#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace zt::test {

/// An environment variable with another value, or none, for a scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const char* value) : _name(std::move(name)) {
    if (const char* before = ::getenv(_name.c_str())) _before = before;
    set(value);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
  ~ScopedEnvironment() { set(_before ? _before->c_str() : nullptr); }

 private:
  void set(const char* value) const {
    if (value != nullptr) {
      ::setenv(_name.c_str(), value, 1);
    } else {
      ::unsetenv(_name.c_str());
    }
  }

  std::string _name;
  std::optional<std::string> _before;
};

}  // namespace zt::test
