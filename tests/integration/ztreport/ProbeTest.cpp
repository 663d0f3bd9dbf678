// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/integration/ztreport/ReportProgram.h"

namespace zt::test {
namespace {

/// A user who speaks German and has no applications.
class ProbeTest : public testing::Test {
 protected:
  ProbeTest() {
    _program.setVariable("LC_ALL=de_DE.UTF-8");
    _program.setVariable("XDG_DATA_DIRS=" + _program.folder() + "/nothing");
    _program.setVariable("XDG_CONFIG_HOME=" + _program.folder() + "/config");
  }

  ReportProgram _program;
};

TEST_F(ProbeTest, TellsWhatIsFoundInAlignedLines) {
  const Finished result = _program.run({"probe"});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.output, testing::MatchesRegex("system          MACOS [0-9]+\\.[0-9]+\n"
                                                   "service pack    [0-9]+\n"
                                                   "language        GERMAN\n"
                                                   "administrator   no\n"
                                                   "e-mail clients  none of the known ones\n"
                                                   "browsers        none of the known ones\n"));
}

TEST_F(ProbeTest, ItsJsonIsAPoolOfADescription) {
  const Finished result = _program.run({"probe", "--json"});
  EXPECT_EQ(result.errors, "");
  ASSERT_EQ(result.status, 0);
  auto found = nlohmann::json::parse(result.output);
  EXPECT_EQ(found.at("userLanguage"), "GERMAN");
  EXPECT_EQ(found.at("isAdmin"), false);
  const std::string file =
      _program.write("description.json", nlohmann::json{{"pools", {found}}}.dump());
  const Finished rendered = _program.run({"render", "--plain", file});
  EXPECT_EQ(rendered.errors, "");
  EXPECT_EQ(rendered.status, 0);
  EXPECT_NE(rendered.output.find("<Value>" + found.at("osVersion").get<std::string>() + "</Value>"),
            std::string::npos);
}

}  // namespace
}  // namespace zt::test
