// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/Text.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

/// Collects what the library logs during its lifetime, one line for each message:
/// "warning store: cannot write /x".
class CollectedLog {
 public:
  CollectedLog() {
    ZtHost::setLogHandler([this](ZtLogLevel level, std::string_view module, std::string_view text) {
      constexpr std::string_view kLevels[] = {"debug", "info", "warning", "error"};
      std::string line;
      appendText(line, kLevels[static_cast<std::size_t>(level)], " ", module, ": ", text);
      const std::scoped_lock lock(_mutex);
      _lines.push_back(std::move(line));
    });
  }
  CollectedLog(const CollectedLog&) = delete;
  CollectedLog& operator=(const CollectedLog&) = delete;
  ~CollectedLog() { ZtHost::setLogHandler(nullptr); }

  std::vector<std::string> lines() const {
    const std::scoped_lock lock(_mutex);
    return _lines;
  }

 private:
  mutable std::mutex _mutex;
  std::vector<std::string> _lines;
};

}  // namespace zt::test
