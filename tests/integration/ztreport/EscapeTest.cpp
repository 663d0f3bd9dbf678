// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

namespace zt::test {
namespace {

using testing::HasSubstr;

std::string described(const std::string& fields, const std::string& more = "") {
  return R"({"customerId": "Kelvane", )" + more + R"("pools": [{"kind": "generic",
    "poolType": "CUSTOM", "timeStamp": "2026-11-21T12:00:00Z", "fields": [)" +
         fields + "]}]}";
}

std::string field(const std::string& name, const std::string& value) {
  return R"({"name": ")" + name + R"(", "type": "string", "value": ")" + value + "\"}";
}

std::string warning(const std::string& values) {
  return "ztreport: warning: the report is not well-formed XML because of " + values +
         ", so it can never be sent from the store; --escape prevents that\n";
}

// A saved report with such a value stopped `resend` for good, and nothing had said so before.
TEST(EscapeTest, WarnsOfValuesThatMakeAReportMalformed) {
  const ReportProgram program;
  const std::string inPool = " in the pool CUSTOM";
  const std::pair<std::string, std::string> rows[] = {
      {described(field("EDITION", "Home & Office")), "the value of EDITION" + inPool},
      {described(field("EDITION", "a ]]> b")), "the value of EDITION" + inPool},
      {described(field("EDITION", "\\u0001")), "the value of EDITION" + inPool},
      {described(field("A<B", "x")), "the name \"A<B\"" + inPool},
      {described(field("A", "<") + "," + field("B", "x") + "," + field("C", "&x")),
       "the value of A" + inPool + " (and 1 more)"},
      {described("", R"("applicationVersion": "<2", )"), "the value of ApplicationVersion"},
      {R"({"pools": [{"kind": "generic", "poolType": "A\"B"}]})", "the pool type \"A\"B\""},
      {R"({"pools": [{"kind": "execution", "steps": [{"stepName": "R&D"}]}]})",
       "the value of STEP_NAME in the pool EXECUTION"},
  };
  for (const auto& [description, values] : rows) {
    const std::string file = program.write("report.json", description);
    const Finished result = program.run({"save", file});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, warning(values));
    EXPECT_EQ(program.run({"save", file, "--quiet"}), done(""));
    EXPECT_EQ(program.run({"save", file, "--escape"}).errors, "") << description;
  }
}

TEST(EscapeTest, DoesNotWarnOfValuesThatAParserReads) {
  const ReportProgram program;
  for (const std::string value : {"Home", "&lt;", "<b>x</b>", "\\\"'>", "a\\nb", "\\u00e4"}) {
    const std::string file = program.write("report.json", described(field("EDITION", value)));
    EXPECT_EQ(program.run({"save", file}).errors, "") << value;
  }
  EXPECT_EQ(program.run({"save", program.write("array.json", describedReport())}).errors, "");
}

TEST(EscapeTest, SendAndRunWarnToo) {
  ReportProgram program;
  Inbox inbox;
  program.setVariable("http_proxy=" + inbox.url());
  const std::string file = program.write("report.json", described(field("EDITION", "a & b")));
  const Finished sent = program.run({"send", file, "--config-url", inbox.configurationUrl()});
  EXPECT_EQ(sent.status, 0);
  EXPECT_EQ(sent.errors, warning("the value of EDITION in the pool CUSTOM"));
  const Finished run = program.run({"run", "--customer", "Kelvane", "--fact", "EDITION=a & b"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.errors, warning("the value of EDITION in the pool EXECUTION"));
  EXPECT_EQ(program.run({"run", "--customer", "Kelvane", "--fact", "E=&", "--escape"}).errors, "");
  EXPECT_THAT(inbox.raw(inbox.reports().front().number), HasSubstr(">&amp;<"));
}

TEST(EscapeTest, AnEscapedReportIsSentFromTheStore) {
  const ReportProgram program;
  Inbox inbox;
  const std::string file = program.write("report.json", described(field("EDITION", "a < b & c")));
  ASSERT_EQ(program.run({"save", file, "--escape"}).status, 0);
  EXPECT_EQ(program.run({"resend", "--config-url", inbox.configurationUrl()}),
            done("1 sent, 0 left\n"));
  EXPECT_THAT(inbox.raw(inbox.reports().front().number), HasSubstr(">a &lt; b &amp; c<"));
  EXPECT_THAT(program.run({"render", file, "--escape"}).output, HasSubstr(">a &lt; b &amp; c<"));
}

}  // namespace
}  // namespace zt::test
