#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

// `ztreport run`: one whole run through the facade, with the inbox as the proxy to the customer's
// configuration host.

namespace {

using zt::test::contentOf;
using zt::test::Finished;
using zt::test::Inbox;
using zt::test::reportIdOf;
using zt::test::ReportProgram;
using zt::test::valueOf;

const std::vector<std::string> kRun{"run",
                                    "--customer",
                                    "Norvantel",
                                    "--app-id",
                                    "{MINE}",
                                    "--start",
                                    "setup",
                                    "--end",
                                    "finish",
                                    "--fact",
                                    "EDITION=Home=Pro",
                                    "--fact",
                                    "EMPTY=",
                                    "--flag",
                                    "ICON=yes",
                                    "--flag",
                                    "MENU=no",
                                    "--step",
                                    "ENTER:Copy: all",
                                    "--step",
                                    "ERROR:"};

std::vector<std::string> with(std::vector<std::string> arguments,
                              const std::vector<std::string>& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
  return arguments;
}

/// The execution pool of a request, with every date as DATE.
std::string executionOf(const std::string& request) {
  const std::size_t begin =
      request.find("           <Data xsi:type=\"com_Pool\" Pool=\"EXECUTION\">");
  const std::size_t end = request.find("         </Datas>", begin);
  static const std::regex kDate("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]{12}UTC");
  return std::regex_replace(request.substr(begin, end - begin), kDate, "DATE");
}

std::string field(const std::string& type, const std::string& name, const std::string& value,
                  std::size_t column) {
  const std::string indent(column, ' ');
  return indent + "<Field xsi:type=\"com_Field\" FieldType=\"" + type + "\">\r\n" + indent +
         "  <Name xsi:type=\"xsd:string\">" + name + "</Name>\r\n" + indent +
         "  <Value xsi:type=\"xsd:string\">" + value + "</Value>\r\n" + indent + "</Field>\r\n";
}

std::string step(const std::string& name, const std::string& type) {
  return "                 <Fields xsi:type=\"com_Fields\">\r\n" +
         field("string", "STEP_NAME", name, 19) + field("string", "STEP_TYPE", type, 19) +
         field("string", "STEP_TIMESTAMP", "DATE", 19) +
         field("string", "STEP_MESSAGESTRING", "", 19) +
         field("string", "STEP_MESSAGECODE", "", 19) + "                 </Fields>\r\n";
}

std::string expectedExecution() {
  return "           <Data xsi:type=\"com_Pool\" Pool=\"EXECUTION\">\r\n"
         "             <Date xsi:type=\"xsd:dateTime\">DATE</Date>\r\n"
         "             <Fields xsi:type=\"com_Fields\">\r\n" +
         field("string", "INSTALLATION_TYPE", "Standard", 15) +
         field("string", "START_POINT", "setup", 15) + field("string", "START_TIME", "DATE", 15) +
         field("string", "END_POINT", "finish", 15) + field("string", "END_TIME", "DATE", 15) +
         field("string", "END_RESULTSTRING", "", 15) + field("string", "END_RESULTCODE", "", 15) +
         field("string", "END_ERRORMESSAGESTRING", "", 15) +
         field("string", "END_ERRORMESSAGECODE", "", 15) +
         field("boolean", "CANCELLED", "FALSE", 15) + field("boolean", "SUCCESSFULL", "TRUE", 15) +
         "               <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
         "                 <Name xsi:type=\"xsd:string\">INSTALLATIONSTEPS</Name>\r\n" +
         step("Copy: all", "ENTER") + step("", "ERROR") + "               </Field>\r\n" +
         field("string", "EDITION", "Home=Pro", 15) + field("string", "EMPTY", "", 15) +
         field("boolean", "ICON", "TRUE", 15) + field("boolean", "MENU", "FALSE", 15) +
         "             </Fields>\r\n"
         "           </Data>\r\n";
}

class RunTest : public testing::Test {
 protected:
  void proxyTo(const Inbox& inbox) { _program.setVariable("http_proxy=" + inbox.url()); }

  ReportProgram _program;
};

TEST_F(RunTest, AWholeRunIsAccepted) {
  Inbox inbox;
  proxyTo(inbox);
  const Finished result = _program.run(kRun);
  EXPECT_EQ(result.errors, "");
  ASSERT_EQ(result.status, 0) << result.output;
  ASSERT_EQ(inbox.reports().size(), 1U);
  const std::string request = inbox.raw(1);
  EXPECT_EQ(result.output, "accepted: " + reportIdOf(request) + "\n");
  EXPECT_EQ(valueOf(request, "<CustomerID"), "Norvantel");
  EXPECT_EQ(valueOf(request, "<ApplicationID"), "{MINE}");
  EXPECT_NE(request.find("Pool=\"COMPUTER_SYSTEM\""), std::string::npos);
  EXPECT_EQ(executionOf(request), expectedExecution());
  EXPECT_EQ(_program.fileCount(), 0U);
}

TEST_F(RunTest, WhatIsRefusedIsSavedAndGoesOutByCustomer) {
  Inbox inbox({"--answer", "refuse"});
  proxyTo(inbox);
  const Finished refused = _program.run(kRun);
  EXPECT_EQ(refused.status, 1);
  ASSERT_EQ(_program.stored().size(), 1U);
  const std::string file = _program.storeFolder() + "/" + _program.stored()[0];
  EXPECT_EQ(executionOf(contentOf(file)), expectedExecution());
  EXPECT_TRUE(refused.output.ends_with("\nsaved: " + file + "\n")) << refused.output;

  inbox.behave(R"({"answer": "accept"})");
  const Finished resent = _program.run({"resend", "--customer", "Norvantel"});
  EXPECT_EQ(resent.output, "1 sent, 0 left\n");
  EXPECT_EQ(resent.status, 0);
  EXPECT_EQ(_program.fileCount(), 0U);
}

TEST_F(RunTest, WithSaveNothingIsSent) {
  Inbox inbox;
  proxyTo(inbox);
  const Finished result = _program.run(with(kRun, {"--save"}));
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(inbox.reports().empty());
  ASSERT_EQ(_program.stored().size(), 1U);
  EXPECT_EQ(result.output, _program.storeFolder() + "/" + _program.stored()[0] + "\n");
}

TEST_F(RunTest, WithoutAServerItIsSaved) {
  _program.setVariable("http_proxy=http://127.0.0.1:1");
  const Finished result = _program.run({"run", "--customer", "Kelvane"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.output.starts_with(
      "not accepted (no configuration at http://config.kelvane.example/reporting/kelvane.xml)\n"))
      << result.output;
  EXPECT_EQ(_program.stored().size(), 1U);
}

TEST_F(RunTest, WrongUsageSaysWhatIsWrongAndDoesNothing) {
  const struct {
    std::vector<std::string> arguments;
    std::string message;
  } rows[] = {
      {{"run"}, "--customer is required"},
      {{"run", "--customer", "kelvane"},
       "--customer: no such customer: \"kelvane\"; it is one of Kelvane, Norvantel, Brisalink, "
       "cavomedia, Quillnet"},
      {{"run", "--customer", "Kelvane", "--fact", "EDITION"},
       "--fact EDITION: expected NAME=VALUE"},
      {{"run", "--customer", "Kelvane", "--fact", "=x"}, "--fact =x: expected NAME=VALUE"},
      {{"run", "--customer", "Kelvane", "--fact", "A=1", "--fact", "A=2"},
       "--fact A=2: a second value of this name"},
      {{"run", "--customer", "Kelvane", "--flag", "A=maybe"},
       "--flag A=maybe: expected NAME=yes or NAME=no"},
      {{"run", "--customer", "Kelvane", "--step", "Copy"},
       "--step Copy: expected TYPE:NAME, the type one of ENTER, LEAVE, EXIT, INFO, ERROR"},
      {{"run", "--customer", "Kelvane", "--step", "enter:Copy"},
       "--step enter:Copy: expected TYPE:NAME, the type one of ENTER, LEAVE, EXIT, INFO, ERROR"},
      {{"resend", "--customer", ""},
       "--customer: no such customer: \"\"; it is one of Kelvane, Norvantel, Brisalink, "
       "cavomedia, Quillnet"},
  };
  for (const auto& row : rows) {
    const Finished result = _program.run(row.arguments);
    EXPECT_EQ(result.status, 2) << row.message;
    EXPECT_EQ(result.errors, "ztreport: " + row.message + "\n");
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(_program.fileCount(), 0U);
  }
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"resend"},
        {"resend", "--customer", "Kelvane", "--config-url", "http://127.0.0.1:1/"}}) {
    EXPECT_EQ(_program.run(arguments).status, 2);
  }
}

}  // namespace
