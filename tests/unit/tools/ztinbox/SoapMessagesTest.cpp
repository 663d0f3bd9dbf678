// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/tools/ztinbox/SampleReport.h"
#include "tools/ztinbox/soap/SoapMessages.h"
#include "ztportal/Version.h"

namespace {

using zt::inbox::SoapRequest;
using zt::inbox::soapRequest;

TEST(SoapMessagesTest, TellsReportsFromVersionRequests) {
  zt::test::SampleReport report;
  report.customerId = "<getVersionInfo/>";
  report.value = "<Body><getVersionInfo/></Body>";
  EXPECT_EQ(soapRequest(report.text()), SoapRequest::kReport);
  EXPECT_EQ(soapRequest(zt::test::kVersionRequest), SoapRequest::kVersion);
}

TEST(SoapMessagesTest, ReadsNothingButTheFirstElementOfTheBody) {
  const struct {
    const char* text;
    SoapRequest request;
  } rows[] = {
      {"", SoapRequest::kOther},
      {"getVersionInfo", SoapRequest::kOther},
      {"postPoolDatas", SoapRequest::kOther},
      {"<postPoolDatas>", SoapRequest::kReport},
      {"<getVersionInfo/>", SoapRequest::kVersion},
      {"<m:getVersionInfo/>", SoapRequest::kVersion},
      {"<?xml version=\"1.0\"?><!-- <getVersionInfo/> --><postPoolDatas\r\n>",
       SoapRequest::kReport},
      {"<!DOCTYPE x><e:Envelope><e:Header><getVersionInfo/></e:Header><e:Body>"
       "<m:postPoolDatas>",
       SoapRequest::kReport},
      {"<Envelope><Body><other/><postPoolDatas/>", SoapRequest::kOther},
      {"<Envelope><postPoolDatas/></Envelope>", SoapRequest::kOther},
      {"<Envelope><Body>", SoapRequest::kOther},
      {"<postPoolDatasX/>", SoapRequest::kOther},
      {"<postPoolDatas", SoapRequest::kOther},
      {"<reportData><postPoolDatas/>", SoapRequest::kOther},
      {"<!-- <postPoolDatas/>", SoapRequest::kOther},
      {"<<<postPoolDatas>", SoapRequest::kReport},
      {"<postpooldatas>", SoapRequest::kOther},
  };
  for (const auto& row : rows) EXPECT_EQ(soapRequest(row.text), row.request) << row.text;
}

TEST(SoapMessagesTest, LooksAtTheBeginningOnly) {
  const std::string start = "<Envelope>" + std::string(70'000, ' ');
  EXPECT_EQ(soapRequest(start + "<Body><postPoolDatas>"), SoapRequest::kOther);
}

std::string answerWith(const std::string& value) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\" "
         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
         "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">\n"
         "  <SOAP-ENV:Body>\n"
         "    <ns1:postPoolDatasResponse xmlns:ns1=\"http://reporting.kelvane.example/portal\" "
         "SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">\n"
         "      <return xsi:type=\"xsd:boolean\">" +
         value +
         "</return>\n"
         "    </ns1:postPoolDatasResponse>\n"
         "  </SOAP-ENV:Body>\n"
         "</SOAP-ENV:Envelope>\n";
}

TEST(SoapMessagesTest, WritesTheAnswerToAReport) {
  EXPECT_EQ(zt::inbox::reportAnswer(true), answerWith("true"));
  EXPECT_EQ(zt::inbox::reportAnswer(false), answerWith("false"));
}

TEST(SoapMessagesTest, NothingButTheAcceptanceCanBeTakenForOne) {
  const std::string acceptance = zt::inbox::reportAnswer(true);
  const std::string part = acceptance.substr(0, zt::inbox::harmlessLength(acceptance));
  EXPECT_TRUE(part.ends_with("<ns1:postPoolDa")) << part;
  for (const std::string& text :
       {zt::inbox::reportAnswer(false), std::string(zt::inbox::kGarbage), part}) {
    EXPECT_EQ(text.find("true"), std::string::npos) << text;
  }
}

TEST(SoapMessagesTest, PointsAtItsOwnAddresses) {
  EXPECT_EQ(zt::inbox::configurationDocument("http://[::1]:7"),
            "<configuration><defSOAP>http://[::1]:7/soap</defSOAP>"
            "<defTestSOAP>http://[::1]:7/soap-test</defTestSOAP></configuration>");
}

TEST(SoapMessagesTest, SaysItsVersion) {
  EXPECT_EQ(zt::inbox::versionDocument(),
            "<versioninfo>ztinbox " ZTPORTAL_VERSION "</versioninfo>");
}

}  // namespace
