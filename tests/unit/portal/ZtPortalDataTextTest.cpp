#include <cstddef>
#include <memory>
#include <string>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ZtPortalData.h"

// The text that a document is written as.

namespace zt::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// A field that cannot be written.
class RaisingField final : public ZtPortalPoolField {
 public:
  explicit RaisingField(void (*raiser)())
      : ZtPortalPoolField(Creation{}, "RAISING"), _raiser(raiser) {}
  void addToXml(const ZtString& /*prefix*/, std::string& /*xml*/, bool /*soap*/) const override {
    _raiser();
  }

 private:
  void (*_raiser)();
};

class ZtPortalDataTextTest : public PortalTest {};

TEST_F(ZtPortalDataTextTest, WritesTheSoapRequestByteForByte) {
  const auto document = makeDocument();
  document->addPool("CUSTOM", ZtDate::fromMilliseconds(1795262400123))->addString("RESULT", "OK");
  document->addPool("EMPTY", ZtDate());
  const std::string expected = crlf(
      R"(<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">
  <SOAP-ENV:Body>
    <postPoolDatas xmlns:m="http://reporting.kelvane.example/portal" SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
       <reportData xsi:type="com_Report">
         <ReportID xsi:type="xsd:string">)" +
      std::string(document->reportId().view()) + R"(</ReportID>
         <MachineID xsi:type="xsd:string">{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}</MachineID>
         <CustomerID xsi:type="xsd:string">Kelvane</CustomerID>
         <ApplicationID xsi:type="xsd:string">{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>
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
)");
  EXPECT_EQ(document->generateXml(nullptr, true), expected);
  EXPECT_EQ(document->getSoapString(), expected);
}

TEST_F(ZtPortalDataTextTest, WritesThePlainDocumentByteForByte) {
  const auto document = makeDocument();
  document->addPool("CUSTOM", ZtDate::fromMilliseconds(1795262400123))->addString("RESULT", "OK");
  document->addPool("EMPTY", ZtDate());
  const std::string expected = crlf(R"(<?xml version="1.0"?>
<reportData>
  <ReportID>)" + std::string(document->reportId().view()) +
                                    R"(</ReportID>
  <MachineID>{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}</MachineID>
  <CustomerID>Kelvane</CustomerID>
  <ApplicationID>{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>
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
)");
  EXPECT_EQ(document->generateXml(nullptr, false), expected);
  EXPECT_THAT(expected, Not(HasSubstr("xsi:type")));
}

TEST_F(ZtPortalDataTextTest, WritesMissingIdentifiersAsNullAndOthersUnescaped) {
  const auto document =
      ZtPortalData::initWithValues(nullptr, false, "<&\">", nullptr, "\xC3\xA4\r\n]]>");
  document->addPool("CUSTOM", ZtDate());
  EXPECT_EQ(document->generateXml("", false),
            "<?xml version=\"1.0\"?>\r\n"
            "<reportData>\r\n"
            "  <ReportID>" +
                std::string(document->reportId().view()) +
                "</ReportID>\r\n"
                "  <MachineID>{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}</MachineID>\r\n"
                "  <CustomerID><&\"></CustomerID>\r\n"
                "  <ApplicationID>(null)</ApplicationID>\r\n"
                "  <ApplicationVersion>\xC3\xA4\r\n]]></ApplicationVersion>\r\n"
                "  <Datas>\r\n"
                "    <Data Pool=\"CUSTOM\">\r\n"
                "      <Date>(null)</Date>\r\n"
                "      <Fields/>\r\n"
                "    </Data>\r\n"
                "  </Datas>\r\n"
                "</reportData>\r\n");
}

TEST_F(ZtPortalDataTextTest, IgnoresTheTextThatItIsGiven) {
  const auto document = makeDocumentWithPool();
  EXPECT_EQ(document->generateXml("<other/>", true), requestOf(*document));
  EXPECT_EQ(document->generateXml("", true), requestOf(*document));
}

TEST_F(ZtPortalDataTextTest, WritesTheValuesOfTheMomentAsOftenAsItIsAsked) {
  const auto document = makeDocumentWithPool();
  EXPECT_EQ(document->getSoapString(), requestOf(*document));
  EXPECT_EQ(document->getSoapString(), requestOf(*document));
  document->pools().front()->setPoolType("OTHER");
  EXPECT_THAT(document->getSoapString(), HasSubstr("Pool=\"OTHER\">"));
}

TEST_F(ZtPortalDataTextTest, HasRoomForAUsualReportFromTheStart) {
  const auto document = makeDocumentWithPool();
  EXPECT_EQ(document->generateXml(nullptr, false).capacity(), 80U * 1024);
}

TEST_F(ZtPortalDataTextTest, HasNoTextWithoutPools) {
  const auto document = makeDocument();
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->generateXml(nullptr, true), "");
  EXPECT_EQ(document->generateXml(nullptr, false), "");
}

TEST_F(ZtPortalDataTextTest, HasNoTextAtAllWhenAPoolRaises) {
  const auto document = makeDocumentWithPool();
  document->addPool("SECOND", ZtDate())
      ->fields()
      ->mutableFields()
      ->push_back(std::make_shared<RaisingField>(&raise));
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->generateXml(nullptr, true), "");
  EXPECT_EQ(document->generateXml(nullptr, false), "");
}

TEST_F(ZtPortalDataTextTest, LetsForeignExceptionsOutOfItsText) {
  const auto document = makeDocument();
  document->addPool("CUSTOM", ZtDate())
      ->fields()
      ->mutableFields()
      ->push_back(std::make_shared<RaisingField>(&raiseForeign));
  EXPECT_THROW(document->getSoapString(), ForeignError);
  EXPECT_THROW(document->generateXml(nullptr, false), ForeignError);
}

}  // namespace
}  // namespace zt::test
