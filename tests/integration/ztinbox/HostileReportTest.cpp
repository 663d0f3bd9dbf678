// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Inbox.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

// Reports that try to do harm: each is given back byte for byte as what it is, and as valid JSON
// and plain text everywhere else.

namespace zt::test {
namespace {

using nlohmann::json;

std::string get(const Inbox& inbox, const std::string& path) {
  auto client = inbox.newClient();
  client.setTimeout(60);
  const auto answer = client.get(path);
  EXPECT_TRUE(answer) << path;
  if (!answer) return "";
  EXPECT_EQ(answer->status, 200) << path << answer->body.substr(0, 500);
  return answer->body;
}

/// Posts the report and expects it back; the details of it.
json keep(const Inbox& inbox, const std::string& report) {
  auto client = inbox.newClient();
  client.setTimeout(60);
  const auto answer = client.post("/soap", report, "text/xml");
  EXPECT_TRUE(answer);
  if (!answer) return {};
  EXPECT_NE(answer->body.find(">true<"), std::string::npos);
  const json newest = json::parse(get(inbox, "/api/v1/reports?limit=1"))[0];
  const std::string address = "/api/v1/reports/" + std::to_string(newest["number"].get<int>());
  EXPECT_EQ(get(inbox, address + "/raw") == report, true);
  get(inbox, "/api/v1/stats");
  return json::parse(get(inbox, address));
}

TEST(HostileReportTest, MarkupInEveryNameAndValueStaysText) {
  const Inbox inbox;
  const std::string script = "</Value><script>alert(1)</script><img src=x onerror=alert(1)>\"'&lt;";
  SampleReport report;
  report.reportId = report.machineId = report.customerId = script;
  report.applicationId = report.applicationVersion = report.value = report.name = script;
  report.pools = {script, "\"><script>"};
  const json details = keep(inbox, report.text());
  for (const char* key :
       {"reportId", "machineId", "customerId", "applicationId", "applicationVersion"}) {
    EXPECT_EQ(details[key], script) << key;
  }
  EXPECT_EQ(details["pools"], json(report.pools));
  ASSERT_EQ(details["content"].size(), 2U);
  EXPECT_EQ(details["content"][0]["type"], script);
  EXPECT_EQ(details["content"][0]["fields"],
            json::array({{{"name", script}, {"type", "string"}, {"value", script}}}));
  EXPECT_EQ(json::parse(get(inbox, "/api/v1/reports?text=onerror")).size(), 1U);
}

TEST(HostileReportTest, AnAnswerRunsAndLoadsNothingInABrowser) {
  const Inbox inbox;
  keep(inbox, SampleReport().text());
  auto client = inbox.newClient();
  for (const char* path : {"/", "/page/app.mjs", "/nothing", "/api/v1/reports", "/api/v1/reports/1",
                           "/api/v1/reports/1/raw", "/api/v1/reports/2", "/api/v1/openapi.json",
                           "/reporting/kelvane.xml", "/soap"}) {
    const auto answer = client.get(path);
    ASSERT_TRUE(answer) << path;
    EXPECT_EQ(answer->header("Content-Security-Policy"),
              "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; font-src "
              "'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors "
              "'none'")
        << path;
    EXPECT_EQ(answer->header("X-Content-Type-Options"), "nosniff") << path;
    EXPECT_EQ(answer->headers("X-Content-Type-Options").size(), 1U) << path;
    EXPECT_EQ(answer->header("Cross-Origin-Resource-Policy"), "same-origin") << path;
    EXPECT_EQ(answer->header("Referrer-Policy"), "no-referrer") << path;
  }
}

TEST(HostileReportTest, BytesThatAreNotUtf8AreReplacedInJson) {
  const Inbox inbox;
  const std::string bytes("a\xff\xc0\xaf\xed\xa0\x80\xf4\x90\x80\x80\0z", 13);
  SampleReport report;
  report.customerId = report.value = report.name = bytes;
  report.pools = {bytes};
  const json details = keep(inbox, report.text());
  const std::string customer = details["customerId"];
  EXPECT_TRUE(customer.starts_with("a\xef\xbf\xbd")) << customer;
  EXPECT_TRUE(customer.ends_with(std::string("\0z", 2))) << customer;
  EXPECT_EQ(details["content"][0]["fields"][0]["value"], customer);
  const json found =
      json::parse(get(inbox, "/api/v1/reports?customer=a%ff%c0%af%ed%a0%80%f4%90%80%80%00z"));
  EXPECT_EQ(found.size(), 1U) << "a filter means the bytes";
}

TEST(HostileReportTest, LongNamesAndValuesAreShownInPart) {
  const Inbox inbox;
  SampleReport report;
  report.customerId = report.name = std::string(1'000'000, 'n');
  report.value = "needle" + std::string(3'000'000, ' ') + "haystack";
  const json details = keep(inbox, report.text());
  EXPECT_EQ(details["customerId"].get<std::string>().size(), 1'024U);
  const json& field = details["content"][0]["fields"][0];
  EXPECT_EQ(field["name"].get<std::string>().size(), 65'536U);
  EXPECT_EQ(field["value"].get<std::string>().size(), 65'536U);
  EXPECT_EQ(field["size"], report.value.size());
  EXPECT_EQ(details["complete"], false);
  EXPECT_EQ(json::parse(get(inbox, "/api/v1/reports?text=needle")).size(), 1U);
  EXPECT_EQ(json::parse(get(inbox, "/api/v1/reports?text=haystack")).size(), 0U);
}

TEST(HostileReportTest, DepthDoesNotCountAgainstTheStack) {
  const Inbox inbox;
  SampleReport report;
  constexpr std::size_t kDepth = 2'000;
  for (std::size_t depth = 0; depth < kDepth; ++depth) {
    const std::string indent(15 + depth * 4, ' ');
    report.moreFields += indent + "<Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n" +
                         indent + "  <Name xsi:type=\"xsd:string\">D</Date>\r\n" + indent +
                         "  <Fields xsi:type=\"com_Fields\">\r\n";
  }
  for (std::size_t depth = kDepth; depth-- > 0;) {
    const std::string indent(15 + depth * 4, ' ');
    report.moreFields += indent + "  </Fields>\r\n" + indent + "</Data>\r\n";
  }
  json value = keep(inbox, report.text())["content"][0]["fields"][1];
  int depth = 0;
  while (value["type"] == "array" && !value["groups"].empty()) {
    value = json(value["groups"][0][0]);
    ++depth;
  }
  EXPECT_EQ(depth, 32);
}

TEST(HostileReportTest, LargeReportsOfEveryKindAreTaken) {
  const Inbox inbox;
  const std::string head = SampleReport().text().substr(0, SampleReport().text().find("<Data "));
  for (const char* piece :
       {"<Field FieldType=\"array\">\n<Name>x</Name>\n<Fields>\n", "<Value>\n", "</Value>\n",
        "<Data Pool=\"P\">\n", "<Field>\n<Name>\n", "a b c d e f g h\n",
        "<Field>\n<Name>N</Name>\n<Value>V</Value>\n</Field>\n"}) {
    SCOPED_TRACE(piece);
    const std::string text =
        head + "<Data Pool=\"EXECUTION\">\n" + repeated(piece, 4UL * 1024 * 1024);
    const json details = keep(inbox, text);
    EXPECT_EQ(details["size"], text.size());
  }
}

TEST(HostileReportTest, TheLargestReportIsListedShownAndFound) {
  const Inbox inbox;
  SampleReport report;
  report.value = "firstword ";
  report.value += std::string(kLargestReport - report.text().size(), 'v');
  ASSERT_EQ(report.text().size(), kLargestReport);
  const json details = keep(inbox, report.text());
  EXPECT_EQ(details["size"], kLargestReport);
  EXPECT_EQ(details["complete"], false);
  EXPECT_EQ(json::parse(get(inbox, "/api/v1/reports?text=firstword")).size(), 1U);
}

}  // namespace
}  // namespace zt::test
