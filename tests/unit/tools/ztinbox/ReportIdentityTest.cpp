#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/soap/ReportIdentity.h"

namespace {

using zt::inbox::readIdentity;
using zt::inbox::ReportIdentity;
using zt::test::SampleReport;

using Pools = std::vector<std::string>;

constexpr std::size_t kLargest = 64UL * 1024 * 1024;

std::string repeated(const std::string& piece, std::size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size) text += piece;
  return text;
}

TEST(ReportIdentityTest, ReadsWhoSentTheReportAndItsPools) {
  SampleReport report;
  report.pools = {"EXECUTION", "CUSTOM", "EXECUTION"};
  const ReportIdentity identity = readIdentity(report.text());
  EXPECT_EQ(identity.reportId, report.reportId);
  EXPECT_EQ(identity.machineId, report.machineId);
  EXPECT_EQ(identity.customerId, "Kelvane");
  EXPECT_EQ(identity.applicationId, report.applicationId);
  EXPECT_EQ(identity.applicationVersion, "2.1.77");
  EXPECT_EQ(identity.pools, report.pools);
}

TEST(ReportIdentityTest, ReadsThePlainFormToo) {
  const ReportIdentity identity = readIdentity(
      "<?xml version=\"1.0\"?>\r\n<reportData>\r\n  <ReportID>{R}</ReportID>\r\n"
      "  <CustomerID>Kelvane</CustomerID>\r\n  <Datas>\r\n    <Data Pool=\"CUSTOM\">\r\n"
      "    </Data>\r\n  </Datas>\r\n</reportData>\r\n");
  EXPECT_EQ(identity.reportId, "{R}");
  EXPECT_EQ(identity.customerId, "Kelvane");
  EXPECT_EQ(identity.pools, Pools{"CUSTOM"});
}

TEST(ReportIdentityTest, GivesUnescapedValuesAsTheyStand) {
  for (const char* value : {"", "a&b", "a<b", "<CustomerID>", "x</CustomerID>y", "&lt;", "(null)",
                            "<ApplicationID>no</ApplicationID>", "a\r\nb", "\xff\xfe", "]]>"}) {
    SampleReport report;
    report.customerId = value;
    const ReportIdentity identity = readIdentity(report.text());
    EXPECT_EQ(identity.customerId, value);
    EXPECT_EQ(identity.applicationId, report.applicationId) << value;
    EXPECT_EQ(identity.pools, report.pools) << value;
  }
}

TEST(ReportIdentityTest, KeepsNulBytes) {
  SampleReport report;
  report.applicationVersion = std::string("1\0002", 3);
  EXPECT_EQ(readIdentity(report.text()).applicationVersion, report.applicationVersion);
}

TEST(ReportIdentityTest, PoolTypesAreUnescapedToo) {
  SampleReport report;
  report.pools = {"a\"b", "", "<x>", "(null)", "Pool=\"y"};
  EXPECT_EQ(readIdentity(report.text()).pools, report.pools);
}

TEST(ReportIdentityTest, AValueThatQuotesAReportAddsNothing) {
  SampleReport quoted;
  quoted.pools = {"QUOTED"};
  for (const std::string& value :
       {std::string("<Data Pool=\"QUOTED\">"), std::string("\r\n    <Data Pool=\"QUOTED\">\r\n"),
        std::string("\n<CustomerID>Other</CustomerID>\n")}) {
    SampleReport report;
    report.value = value;
    const ReportIdentity identity = readIdentity(report.text());
    EXPECT_EQ(identity.pools, Pools{"EXECUTION"}) << value;
    EXPECT_EQ(identity.customerId, "Kelvane") << value;
  }
}

TEST(ReportIdentityTest, FindsTheElementsOfAReportWithoutLines) {
  const ReportIdentity identity = readIdentity(
      "<Envelope><Body><postPoolDatas><reportData><ReportIDs>no</ReportIDs><ReportID>{R}</ReportID>"
      "<CustomerID a=\"b\">Kelvane</CustomerID><Datas><Data Pool=\"A\"><Date/></Data>"
      "<Data x=\"y\" Pool=\"B\"></Data><Data></Data></Datas></reportData>");
  EXPECT_EQ(identity.reportId, "{R}");
  EXPECT_EQ(identity.customerId, "Kelvane");
  EXPECT_EQ(identity.machineId, std::nullopt);
  EXPECT_EQ(identity.pools, (Pools{"A", "B"}));
}

TEST(ReportIdentityTest, IsEmptyWhenNothingIsThere) {
  for (const char* text : {"", "\n", "<", "<ReportID", "<ReportID>", "<Data Pool=\"", "<Data ",
                           "<Datas>\n<Data Pool=\"A\n", "ReportID"}) {
    const ReportIdentity identity = readIdentity(text);
    EXPECT_FALSE(identity.machineId || identity.customerId) << text;
    EXPECT_EQ(identity.pools.size(), 0U) << text;
  }
}

TEST(ReportIdentityTest, AnEmptyElementIsAnEmptyValue) {
  EXPECT_EQ(readIdentity("<CustomerID xsi:type=\"xsd:string\"/>\n").customerId, "");
}

TEST(ReportIdentityTest, LongValuesAreCutOff) {
  SampleReport report;
  report.customerId = std::string(1'000'000, 'k');
  EXPECT_EQ(readIdentity(report.text()).customerId,
            std::string(zt::inbox::kLongestIdentityValue, 'k'));
}

/// The test's time limit is what would catch a search that starts over and over again.
TEST(ReportIdentityTest, TakesHostileReportsInOneGo) {
  for (const char* piece : {"<ReportID ", "<ReportID>", "<ReportID>\n", "<Data ", "<Data Pool=\"",
                            "<Datas><Data Pool=\"", "<Datas>\n<Data Pool=\"x\n", "\n", "<",
                            "</ReportID>", "<CustomerID>\r\n<ReportID>\r\n"}) {
    const ReportIdentity identity = readIdentity(repeated(piece, kLargest / 8));
    EXPECT_LE(identity.pools.size(), zt::inbox::kMostPools) << piece;
  }
  EXPECT_EQ(readIdentity(std::string(kLargest, '\0')).reportId, std::nullopt);
}

TEST(ReportIdentityTest, ListsALimitedNumberOfPools) {
  const std::string many = "<Datas>\n" + repeated("<Data Pool=\"P\">\n", 2'000'000);
  EXPECT_EQ(readIdentity(many).pools.size(), zt::inbox::kMostPools);
}

}  // namespace
