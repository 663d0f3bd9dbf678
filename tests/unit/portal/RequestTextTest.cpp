// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/CallingField.h"
#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/portal/RequestText.h"

namespace zt::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const ReportHeader kHeader{"{R}", "{M}", "Kelvane", "{A}", "2.1.77"};

/// Source lines with the line ends of a report.
std::string crlf(std::string_view lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

class RequestTextTest : public ::testing::Test {
 protected:
  RequestTextTest() { pools[0]->addString("RESULT", "OK"); }

  ScopedEnvironment zone{"TZ", "UTC"};
  std::vector<std::shared_ptr<ZtPortalPool>> pools{
      ZtPortalPool::initWithValues("CUSTOM", ZtDate::fromMilliseconds(1795262400123)),
      ZtPortalPool::initWithValues("EMPTY", ZtDate())};
};

TEST_F(RequestTextTest, TheSoapRequestByteForByte) {
  EXPECT_EQ(
      reportText(kHeader, pools, true),
      crlf(
          R"(<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">
  <SOAP-ENV:Body>
    <postPoolDatas xmlns:m="http://reporting.kelvane.example/portal" SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
       <reportData xsi:type="com_Report">
         <ReportID xsi:type="xsd:string">{R}</ReportID>
         <MachineID xsi:type="xsd:string">{M}</MachineID>
         <CustomerID xsi:type="xsd:string">Kelvane</CustomerID>
         <ApplicationID xsi:type="xsd:string">{A}</ApplicationID>
         <ApplicationVersion xsi:type="xsd:string">2.1.77</ApplicationVersion>
         <Datas xsi:type="com_Pools">
           <Data xsi:type="com_Pool" Pool="CUSTOM">
             <Date xsi:type="xsd:dateTime">2026-11-21T12:00:00.123UTC</Date>
             <Fields xsi:type="com_Fields">
               <Field xsi:type="com_Field" FieldType="string">
                 <Name xsi:type="xsd:string">RESULT</Name>
                 <Value xsi:type="xsd:string">OK</Value>
               </Field>
             </Fields>
           </Data>
           <Data xsi:type="com_Pool" Pool="EMPTY">
             <Date xsi:type="xsd:dateTime">(null)</Date>
             <Fields xsi:type="com_Fields"/>
           </Data>
         </Datas>
       </reportData>
    </postPoolDatas>
  </SOAP-ENV:Body>
</SOAP-ENV:Envelope>
)"));
}

TEST_F(RequestTextTest, ThePlainTextStartsWithTheXmlDeclarationAndHasNoTypeAttribute) {
  const std::string text = reportText(kHeader, pools, false);
  EXPECT_EQ(text, crlf(R"(<?xml version="1.0"?>
<reportData>
  <ReportID>{R}</ReportID>
  <MachineID>{M}</MachineID>
  <CustomerID>Kelvane</CustomerID>
  <ApplicationID>{A}</ApplicationID>
  <ApplicationVersion>2.1.77</ApplicationVersion>
  <Datas>
    <Data Pool="CUSTOM">
      <Date>2026-11-21T12:00:00.123UTC</Date>
      <Fields>
        <Field FieldType="string">
          <Name>RESULT</Name>
          <Value>OK</Value>
        </Field>
      </Fields>
    </Data>
    <Data Pool="EMPTY">
      <Date>(null)</Date>
      <Fields/>
    </Data>
  </Datas>
</reportData>
)"));
  EXPECT_EQ(text.find("xsi:type"), std::string::npos);
}

TEST_F(RequestTextTest, MissingIdentifiersAreNullAndOthersAreNotEscaped) {
  const std::string text =
      reportText({nullptr, "", "<&\">", nullptr, "\xC3\xA4\r\n]]>"}, pools, false);
  EXPECT_NE(text.find("  <ReportID>(null)</ReportID>\r\n"
                      "  <MachineID></MachineID>\r\n"
                      "  <CustomerID><&\"></CustomerID>\r\n"
                      "  <ApplicationID>(null)</ApplicationID>\r\n"
                      "  <ApplicationVersion>\xC3\xA4\r\n]]></ApplicationVersion>\r\n"),
            std::string::npos)
      << text;
}

TEST_F(RequestTextTest, IsEmptyWithoutPools) {
  EXPECT_EQ(reportText(kHeader, {}, true), "");
  EXPECT_EQ(reportText(kHeader, {}, false), "");
}

// The pools were read from the live list, so a field that added a pool while it was written made
// the writer read freed memory.
TEST_F(RequestTextTest, HasThePoolsThatWereThereWhenItWasBegun) {
  const auto addPools = [this] {
    for (int i = 0; i < 100; ++i) pools.push_back(ZtPortalPool::initWithValues("NEW", ZtDate()));
  };
  pools[0]->fields()->mutableFields()->push_back(std::make_shared<CallingField>(addPools));
  const std::string text = reportText(kHeader, pools, false);
  EXPECT_THAT(text, HasSubstr("called\r\n"));
  EXPECT_THAT(text, HasSubstr("Pool=\"EMPTY\""));
  EXPECT_THAT(text, Not(HasSubstr("Pool=\"NEW\"")));
}

// Each pool looked for the time zone by itself, so that one text could have dates of two zones.
TEST_F(RequestTextTest, IsWrittenInTheZoneInWhichItWasBegun) {
  std::optional<ScopedEnvironment> otherZone;
  const auto change = [&otherZone] { otherZone.emplace("TZ", "NST3:30"); };
  pools[0]->fields()->mutableFields()->push_back(std::make_shared<CallingField>(change));
  pools[1]->setTimeStamp(ZtDate::fromMilliseconds(1795262400123));
  EXPECT_THAT(reportText(kHeader, pools, false),
              HasSubstr("Pool=\"EMPTY\">\r\n      <Date>2026-11-21T12:00:00.123UTC</Date>"));
  EXPECT_THAT(reportText(kHeader, pools, false),
              HasSubstr("Pool=\"EMPTY\">\r\n      <Date>2026-11-21T08:30:00.123NST</Date>"));
}

TEST_F(RequestTextTest, TheVersionRequestByteForByte) {
  EXPECT_EQ(versionRequest(),
            "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
            " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
            " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
            " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">"
            "  <SOAP-ENV:Body>"
            "    <getVersionInfo xmlns:m=\"http://reporting.kelvane.example/portal\""
            " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"/>"
            "  </SOAP-ENV:Body>"
            "</SOAP-ENV:Envelope>");
}

TEST_F(RequestTextTest, TheCustomerIdOfATestHasASuffix) {
  EXPECT_EQ(testCustomerId("Brisalink"), "Brisalink_Test");
  EXPECT_EQ(testCustomerId(""), "_Test");
  EXPECT_TRUE(testCustomerId(nullptr).isNull());
}

}  // namespace
}  // namespace zt::test
