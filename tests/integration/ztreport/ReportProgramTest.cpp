#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

namespace {

using zt::test::describedReport;
using zt::test::Finished;
using zt::test::Inbox;
using zt::test::reportIdOf;
using zt::test::ReportProgram;
using zt::test::valueOf;

constexpr const char* kUnreachable = "http://127.0.0.1:1/kelvane.xml";

class ReportProgramTest : public testing::Test {
 protected:
  /// The program fails with this message alone, and leaves nothing behind.
  void expectFailure(const std::vector<std::string>& arguments, int status,
                     const std::string& message,
                     const zt::test::SubprocessOptions& files = {}) const {
    const Finished result = program.run(arguments, files);
    const std::string shown = testing::PrintToString(arguments);
    EXPECT_EQ(result.status, status) << shown;
    EXPECT_EQ(result.errors, "ztreport: " + message + "\n") << shown;
    EXPECT_EQ(result.output, "") << shown;
    EXPECT_EQ(program.fileCount(), 0U) << shown;
  }

  ReportProgram program;
};

std::string crlf(const std::string& lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

std::string soapText(const std::string& reportId, const std::string& machineId) {
  return crlf(
      "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
      " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
      " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
      " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
      "  <SOAP-ENV:Body>\n"
      "    <postPoolDatas xmlns:m=\"http://reporting.kelvane.example/portal\""
      " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\n"
      "       <reportData xsi:type=\"com_Report\">\n"
      "         <ReportID xsi:type=\"xsd:string\">" +
      reportId +
      "</ReportID>\n"
      "         <MachineID xsi:type=\"xsd:string\">" +
      machineId +
      "</MachineID>\n"
      "         <CustomerID xsi:type=\"xsd:string\">Kelvane</CustomerID>\n"
      "         <ApplicationID xsi:type=\"xsd:string\">"
      "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>\n"
      "         <ApplicationVersion xsi:type=\"xsd:string\">2.1.77</ApplicationVersion>\n"
      "         <Datas xsi:type=\"com_Pools\">\n"
      "           <Data xsi:type=\"com_Pool\" Pool=\"CUSTOM\">\n"
      "             <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\n"
      "             <Fields xsi:type=\"com_Fields\">\n"
      "               <Field xsi:type=\"com_Field\" FieldType=\"array\">\n"
      "                 <Name xsi:type=\"xsd:string\">LIST</Date>\n"
      "                 <Fields xsi:type=\"com_Fields\">\n"
      "                   <Field xsi:type=\"com_Field\" FieldType=\"integer\">\n"
      "                     <Name xsi:type=\"xsd:string\">COUNT</Name>\n"
      "                     <Value xsi:type=\"xsd:string\">7</Value>\n"
      "                   </Field>\n"
      "                 </Fields>\n"
      "               </Data>\n"
      "               <Field xsi:type=\"com_Field\" FieldType=\"string\">\n"
      "                 <Name xsi:type=\"xsd:string\">EDITION</Name>\n"
      "                 <Value xsi:type=\"xsd:string\">Höme</Value>\n"
      "               </Field>\n"
      "             </Fields>\n"
      "           </Data>\n"
      "         </Datas>\n"
      "       </reportData>\n"
      "    </postPoolDatas>\n"
      "  </SOAP-ENV:Body>\n"
      "</SOAP-ENV:Envelope>\n");
}

std::string plainText(const std::string& reportId, const std::string& machineId) {
  return crlf("<?xml version=\"1.0\"?>\n<reportData>\n  <ReportID>" + reportId +
              "</ReportID>\n  <MachineID>" + machineId + R"(</MachineID>
  <CustomerID>Kelvane</CustomerID>
  <ApplicationID>{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>
  <ApplicationVersion>2.1.77</ApplicationVersion>
  <Datas>
    <Data Pool="CUSTOM">
      <Date>2026-11-21T12:00:00.123UTC</Date>
      <Fields>
        <Field FieldType="array">
          <Name>LIST</Date>
          <Fields>
            <Field FieldType="integer">
              <Name>COUNT</Name>
              <Value>7</Value>
            </Field>
          </Fields>
        </Data>
        <Field FieldType="string">
          <Name>EDITION</Name>
          <Value>Höme</Value>
        </Field>
      </Fields>
    </Data>
  </Datas>
</reportData>
)");
}

void expectText(const Finished& result,
                std::string (*text)(const std::string&, const std::string&)) {
  EXPECT_EQ(result.errors, "");
  ASSERT_EQ(result.status, 0);
  EXPECT_EQ(result.output, text(reportIdOf(result.output), valueOf(result.output, "<MachineID")));
  EXPECT_THAT(reportIdOf(result.output),
              testing::MatchesRegex("\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}"));
}

TEST_F(ReportProgramTest, RendersTheReport) {
  const std::string file = program.write("report.json", describedReport());
  expectText(program.run({"render", file}), soapText);
  expectText(program.run({"render", file, "--plain"}), plainText);
  expectText(program.run({"render", "--plain", file}), plainText);
  EXPECT_EQ(program.fileCount(), 0U);
}

TEST_F(ReportProgramTest, RendersStandardInput) {
  const std::string file = program.write("report.json", describedReport());
  expectText(program.run({"render", "-"}, {.input = file}), soapText);
  expectText(program.run({"render", "--plain", "-"}, {.input = file}), plainText);
}

TEST_F(ReportProgramTest, RendersNothingWithoutPools) {
  const std::string file = program.write("report.json", "{}");
  const Finished result = program.run({"render", file});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
}

TEST_F(ReportProgramTest, TakesTheHostsNameBeforeAndAfterTheCommand) {
  const std::string file = program.write("report.json", describedReport());
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"--app-name", "Setup", "--app-version", "9", "render", file},
           {"render", "--app-name", "Setup", "--app-version", "9", file},
           {"render", file, "--app-name=Setup", "--app-version=9"},
           {"--app-version", "9", "render", file, "--app-name", "Setup"}}) {
    expectText(program.run(arguments), soapText);
  }
}

TEST_F(ReportProgramTest, RefusesWrongUsage) {
  const std::string file = program.write("report.json", describedReport());
  const struct {
    std::vector<std::string> arguments;
    const char* message;
  } rows[] = {
      {{}, "A subcommand is required"},
      {{"reder", "x"}, "no such command: reder"},
      {{"--app-name", "Setup", "reder"}, "no such command: reder"},
      {{"render"}, "FILE is required"},
      {{"send"}, "FILE is required"},
      {{"save"}, "FILE is required"},
      {{"resend"}, "Exactly 1 option from [--customer,--config-url] is required"},
      {{"resend", "--config-url"}, "--config-url: 1 required URL missing"},
      {{"resend", "--config-url", ""}, "--config-url: empty"},
      {{"render", file, "--unknown"}, "The following argument was not expected: --unknown"},
      {{"--unknown", "render", file}, "The following argument was not expected: --unknown"},
      {{"render", file, "-p"}, "The following argument was not expected: -p"},
      {{"render", file, "more"}, "The following argument was not expected: more"},
      {{"save", file, "--plain"}, "The following argument was not expected: --plain"},
      {{"render", file, "--app-name"}, "--app-name: 1 required TEXT missing"},
      {{"--app-name", "", "save", file}, "--app-name: \"\" cannot name a folder"},
      {{"--app-name", ".", "save", file}, "--app-name: \".\" cannot name a folder"},
      {{"save", file, "--app-name", ".."}, "--app-name: \"..\" cannot name a folder"},
      {{"save", "--app-name", "a/b", file}, "--app-name: \"a/b\" cannot name a folder"},
      {{"save", "--app-name", "/", file}, "--app-name: \"/\" cannot name a folder"},
  };
  for (const auto& row : rows) expectFailure(row.arguments, 2, row.message);
}

TEST_F(ReportProgramTest, RefusesAWrongDescription) {
  Inbox inbox;
  const struct {
    std::string content;
    const char* fault;
  } rows[] = {
      {"", "line 1, column 1: no JSON (unexpected end of input; expected '[', '{', or a literal)"},
      {"7", "expected an object, found 7"},
      {"{\"configurationUrl\":\n\"" + inbox.configurationUrl() + "\" \"pools\"}",
       nullptr},  // its column depends on the port
      {describedReport(inbox.configurationUrl(), R"("company": "Kelvane", )"),
       "/company: unknown key"},
      {describedReport(inbox.configurationUrl(), R"("customerId": "Kelvane", )"),
       "/customerId: stands twice in its object"},
      {R"({"configurationUrl": ")" + inbox.configurationUrl() +
           R"(", "pools": [{"kind": "generic"}, {"kind": "generic", "fields": [
             {"name": "A", "type": "none"}, {"name": "A", "type": "integer", "value": 2147483648}]}]})",
       "/pools/1/fields/1/value: 2147483648 is out of range (-2147483648 to 2147483647)"},
  };
  for (const auto& row : rows) {
    const std::string fault = row.fault != nullptr
                                  ? row.fault
                                  : "line 2, column " +
                                        std::to_string(inbox.configurationUrl().size() + 10) +
                                        ": no JSON (unexpected string literal; expected '}')";
    const std::string file = program.write("wrong.json", row.content);
    for (const char* command : {"render", "save", "send"}) {
      expectFailure({command, file}, 2, file + ": " + fault);
    }
    expectFailure({"save", "-"}, 2, "standard input: " + fault, {.input = file});
  }
  EXPECT_EQ(inbox.reports().size(), 0U);
}

TEST_F(ReportProgramTest, DeliversNothingWithoutPoolsOrServer) {
  const std::string noPools = program.write(
      "a.json", std::string(R"({"configurationUrl": ")") + kUnreachable + R"(", "pools": []})");
  for (const char* command : {"send", "save"}) {
    expectFailure({command, noPools}, 2,
                  noPools + ": /pools: a report without a pool has no text to deliver");
  }
  const std::string noServer = program.write("b.json", describedReport());
  const std::string message = ": /configurationUrl: absent, and no --config-url is given";
  expectFailure({"send", noServer}, 2, noServer + message);
  expectFailure({"send", "-"}, 2, "standard input" + message, {.input = noServer});
}

TEST_F(ReportProgramTest, SaysWhichFileCannotBeRead) {
  const std::string absent = program.path("absent.json");
  const std::string folder = program.folder();
  for (const char* command : {"render", "send", "save"}) {
    expectFailure({command, absent}, 3, absent + ": No such file or directory");
    expectFailure({command, folder}, 3, folder + ": Is a directory");
    expectFailure({command, ""}, 3, ": No such file or directory");
  }
  // These once were a fault without a name, and an empty text.
  expectFailure({"render", "/proc/self/mem"}, 3, "/proc/self/mem: Input/output error");
  expectFailure({"render", "-"}, 3, "standard input: Is a directory", {.input = folder});
}

TEST_F(ReportProgramTest, SaysWhenItsOutputCannotBeWritten) {
  const std::string file = program.write("report.json", describedReport());
  const zt::test::SubprocessOptions full{.output = "/dev/full"};
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"render", file},
                                             {"render", "--plain", file},
                                             {"--help"},
                                             {"--version"},
                                             {"render", "--help"},
                                             {"resend", "--config-url", kUnreachable}}) {
    expectFailure(arguments, 3, "standard output cannot be written", full);
  }
  const Finished saved = program.run({"save", file}, full);
  EXPECT_EQ(saved.status, 3);
  EXPECT_EQ(saved.errors, "ztreport: standard output cannot be written\n");
  EXPECT_EQ(program.stored().size(), 1U);
}

TEST_F(ReportProgramTest, PrintsItsHelp) {
  const Finished help = program.run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.errors, "");
  EXPECT_EQ(help.output, R"(Reports the run of a program from the command line.
Usage: ztreport [OPTIONS] SUBCOMMAND

Options:
  --version                   Display program version information and exit
  --help                      Print this help and exit
  --app-name TEXT=ztreport    Name of the program that is reported
  --app-version TEXT=1.0.0    Version of the program that is reported

Subcommands:
  render                      Print the report's text; nothing is sent
  send                        Send the report; save it when it is not accepted
  save                        Save the report without sending it, and print the path of its file
  run                         Report one whole run: the computer, its course and its facts
  resend                      Send the saved reports
  store                       List the saved reports, and say which cannot be sent and why
  show                        Print what a report's text says
  probe                       Print what the inventory of this computer finds
  listen                      Print the broadcasts of reports as they come, one JSON object a line
  doctor                      Check the whole way of a report, and say what helps where it fails

)");
}

TEST_F(ReportProgramTest, PrintsTheHelpOfACommand) {
  const Finished render = program.run({"render", "--help"});
  EXPECT_EQ(render.status, 0);
  EXPECT_EQ(render.errors, "");
  EXPECT_EQ(render.output, R"(Print the report's text; nothing is sent
Usage: ztreport render [OPTIONS] FILE

Positionals:
  FILE TEXT REQUIRED          Report description (JSON); - reads standard input

Options:
  --help                      Print this help and exit
  --plain                     Plain XML instead of the SOAP request

)");
  for (const char* command : {"send", "save", "resend"}) {
    const Finished help = program.run({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_EQ(help.errors, "") << command;
    EXPECT_THAT(help.output,
                testing::HasSubstr("\nUsage: ztreport " + std::string(command) + " [OPTIONS]"));
  }
}

TEST_F(ReportProgramTest, PrintsItsVersion) {
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"--version"},
                                             {"render", "--version"},
                                             {"resend", "--version"},
                                             {"--app-name", "Setup", "--version"}}) {
    const Finished version = program.run(arguments);
    EXPECT_EQ(version.status, 0) << testing::PrintToString(arguments);
    EXPECT_EQ(version.output, "ztreport 1.0.0\n");
    EXPECT_EQ(version.errors, "");
  }
}

}  // namespace
