#include <gtest/gtest.h>

#include <string>

#include "tools/ztinbox/soap/SoapAnswers.h"

namespace {

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

TEST(SoapAnswersTest, WritesTheAnswerToAReport) {
  EXPECT_EQ(zt::inbox::reportAnswer(true), answerWith("true"));
  EXPECT_EQ(zt::inbox::reportAnswer(false), answerWith("false"));
}

TEST(SoapAnswersTest, NothingButTheAcceptanceCanBeTakenForOne) {
  const std::string acceptance = zt::inbox::reportAnswer(true);
  const std::string part = acceptance.substr(0, zt::inbox::harmlessLength(acceptance));
  EXPECT_TRUE(part.ends_with("<ns1:postPoolDa")) << part;
  for (const std::string& text :
       {zt::inbox::reportAnswer(false), std::string(zt::inbox::kGarbage), part}) {
    EXPECT_EQ(text.find("true"), std::string::npos) << text;
  }
}

TEST(SoapAnswersTest, PointsAtItsOwnAddresses) {
  EXPECT_EQ(zt::inbox::configurationDocument("http://[::1]:7"),
            "<configuration><defSOAP>http://[::1]:7/soap</defSOAP>"
            "<defTestSOAP>http://[::1]:7/soap-test</defTestSOAP></configuration>");
}

TEST(SoapAnswersTest, SaysItsVersion) {
  EXPECT_EQ(zt::inbox::versionDocument(), "<versioninfo>ztinbox 1.0.0</versioninfo>");
}

}  // namespace
