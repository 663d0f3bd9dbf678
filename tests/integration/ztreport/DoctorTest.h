// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"

namespace zt::test {

/// Result of `ztreport doctor`: its exit status, and "state: reason -> remedy" of each check.
struct Diagnosis {
  int status = -1;
  std::map<std::string, std::string> findings;
};

class DoctorTest : public testing::Test {
 protected:
  Diagnosis examine(const std::string& configurationUrl,
                    const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"doctor", "--config-url", configurationUrl};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Finished result = program.run(arguments);
    EXPECT_EQ(result.errors, "");
    Diagnosis diagnosis{result.status, {}};
    for (std::size_t begin = 0; begin < result.output.size();) {
      const std::size_t end = result.output.find('\n', begin);
      const std::string line = result.output.substr(begin, end - begin);
      diagnosis.findings[trimmed(line.substr(9, 19))] =
          trimmed(line.substr(0, 9)) + ": " + line.substr(28);
      begin = end + 1;
    }
    EXPECT_EQ(diagnosis.findings.size(), 16U) << result.output;
    return diagnosis;
  }

  ReportProgram program;

 private:
  static std::string trimmed(std::string text) {
    text.resize(text.find_last_not_of(' ') + 1);
    return text;
  }
};

}  // namespace zt::test
