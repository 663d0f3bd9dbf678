// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace zt::test {

/// Sets an environment variable, or unsets it when `value` is null, and restores its old value at
/// the end of the scope. No other thread may read the environment meanwhile.
///
///     ScopedEnvironment zone{"TZ", "Europe/Berlin"};
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const char* value) : _name(std::move(name)) {
    if (const char* before = std::getenv(_name.c_str()); before != nullptr) _before = before;
    put(value);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;
  ~ScopedEnvironment() { put(_before ? _before->c_str() : nullptr); }

 private:
  void put(const char* value) const {
    if (value == nullptr) {
      unsetenv(_name.c_str());
    } else {
      setenv(_name.c_str(), value, 1);
    }
  }

  std::string _name;
  std::optional<std::string> _before;
};

}  // namespace zt::test
