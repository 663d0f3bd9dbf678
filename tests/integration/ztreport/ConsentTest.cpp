// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

namespace zt::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(ConsentProgramTest, PrintsAndChangesTheConsentOfAHost) {
  const ReportProgram program;
  EXPECT_EQ(program.run({"consent"}), done("unset\n"));
  EXPECT_EQ(program.fileCount(), 0U);
  EXPECT_EQ(program.run({"consent", "revoked"}), done("revoked\n"));
  EXPECT_EQ(program.run({"consent"}), done("revoked\n"));
  EXPECT_EQ(program.run({"consent", "--app-name", "Setup"}), done("unset\n"));
  EXPECT_EQ(program.run({"consent", "given", "--quiet"}), done(""));
  EXPECT_EQ(program.run({"consent", "--json"}), done("{\n  \"consent\": \"given\"\n}\n"));
  EXPECT_EQ(program.run({"consent", "unset"}), done("unset\n"));
  EXPECT_EQ(program.fileCount(), 0U);
}

TEST(ConsentProgramTest, RefusesWhatItDoesNotKnow) {
  const ReportProgram program;
  const Finished result = program.run({"consent", "revoke"});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.errors,
              HasSubstr("ztreport: CONSENT: \"revoke\" is none of given, revoked and unset"));
  EXPECT_EQ(program.fileCount(), 0U);
}

TEST(ConsentProgramTest, SaysWhenItCannotBeKept) {
  ReportProgram program;
  program.setDataFolder(program.write("a-file", "in the place of the folder"));
  EXPECT_EQ(program.run({"consent", "revoked"}),
            refused(3, "the consent cannot be kept in the user's data folder"));
}

TEST(ConsentProgramTest, DeletesWhatIsStored) {
  const ReportProgram program;
  const std::string file = program.write("report.json", describedFlatReport());
  ASSERT_EQ(program.run({"save", file}).status, 0);
  ASSERT_EQ(program.run({"save", file}).status, 0);
  EXPECT_EQ(program.run({"consent", "revoked"}), done("revoked\n"));
  EXPECT_EQ(program.stored().size(), 2U);
  EXPECT_EQ(program.run({"consent", "--delete-stored", "--json"}),
            done("{\n  \"consent\": \"revoked\",\n  \"deleted\": 2\n}\n"));
  EXPECT_THAT(program.stored(), IsEmpty());
  EXPECT_EQ(program.run({"consent", "--delete-stored"}),
            done("revoked; saved reports deleted: 0\n"));
}

TEST(ConsentProgramTest, WithoutConsentNoCommandReports) {
  const ReportProgram program;
  Inbox inbox;
  const std::string url = inbox.configurationUrl();
  const std::string file = program.write("report.json", describedFlatReport());
  ASSERT_EQ(program.run({"save", file}).status, 0);
  ASSERT_EQ(program.run({"consent", "revoked"}).status, 0);
  const std::vector<std::vector<std::string>> commands{{"send", file, "--config-url", url},
                                                       {"save", file},
                                                       {"run", "--customer", "Kelvane"},
                                                       {"resend", "--config-url", url},
                                                       {"probe"}};
  for (const auto& command : commands) {
    EXPECT_EQ(program.run(command),
              refused(1, "the user has revoked the consent to reports (see ztreport consent)"))
        << command.front();
  }
  EXPECT_THAT(program.run({"doctor", "--config-url", url}).output,
              HasSubstr("the user has revoked the consent to reports -> "
                        "ztreport --app-name='ztreport' consent given\n"));
  EXPECT_EQ(program.run({"render", file}).status, 0);
  EXPECT_THAT(inbox.reports(), IsEmpty());
  EXPECT_EQ(program.stored().size(), 1U);

  ASSERT_EQ(program.run({"consent", "given"}).status, 0);
  EXPECT_EQ(program.run({"resend", "--config-url", url}), done("1 sent, 0 left\n"));
}

}  // namespace
}  // namespace zt::test
