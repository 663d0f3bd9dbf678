// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ztportal/platform/process/Subprocesses.h"

namespace zt::test {

class FakeSubprocesses final : public Subprocesses {
 public:
  struct Run {
    std::string program;
    std::vector<std::string> arguments;
  };

  std::string output(const std::string& program,
                     const std::vector<std::string>& arguments) override {
    runs.push_back({program, arguments});
    if (onRun) onRun();
    return answer;
  }

  std::string answer = "1000\n";
  std::vector<Run> runs;
  std::function<void()> onRun;  // may throw
};

}  // namespace zt::test
