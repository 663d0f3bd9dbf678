#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/ZtTestAccess.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

inline constexpr const char* kConfigurationUrl = "http://config.test/reporting/kelvane.xml";
inline constexpr const char* kReportUrl = "http://report.test/soap";
inline constexpr const char* kTestUrl = "http://report.test/soap-test";
inline constexpr const char* kApplicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";

inline constexpr const char* kAccepted =
    "<SOAP-ENV:Envelope><SOAP-ENV:Body><ns1:postPoolDatasResponse><return>TRUE</return>"
    "</ns1:postPoolDatasResponse></SOAP-ENV:Body></SOAP-ENV:Envelope>";
inline constexpr const char* kRefused =
    "<SOAP-ENV:Envelope><SOAP-ENV:Body><ns1:postPoolDatasResponse><return>FALSE</return>"
    "</ns1:postPoolDatasResponse></SOAP-ENV:Body></SOAP-ENV:Envelope>";

/// An exception of a kind that the library does not know and lets pass.
struct ForeignError : std::runtime_error {
  ForeignError() : std::runtime_error("foreign") {}
};

[[noreturn]] inline void raise() { throw ZtException("PLATFORM", "The platform raises"); }
[[noreturn]] inline void raiseForeign() { throw ForeignError(); }

/// A text of source lines with the line ends of a report.
inline std::string crlf(std::string_view lines) {
  std::string text;
  for (const char byte : lines) {
    if (byte == '\n') text += '\r';
    text += byte;
  }
  return text;
}

/// What a document asks of a made-up machine "Setup" 2.1, whose configuration server and reporting
/// server answer as the members say. `steps` is what happened, in order: "GET <url>",
/// "version <url>", "report <url>" and "broadcast".
class PortalTest : public ::testing::Test {
 protected:
  PortalTest() {
    ZtHost::setBundleInfo({{"CFBundleName", "Setup"}, {"CFBundleShortVersionString", "2.1"}});
    platform.http_.answer = [this](const auto& asked) { return answerTo(asked); };
    platform.broadcast_.onPost = [this] { steps.emplace_back("broadcast"); };
  }

  /// Made with the servers as they are, then forgotten how.
  std::shared_ptr<ZtPortalData> makeDocument(const ZtString& customerId = "Kelvane") {
    auto document = ZtPortalData::initWithValues(kConfigurationUrl, false, customerId,
                                                 kApplicationId, "2.1.77");
    forget();
    return document;
  }

  std::shared_ptr<ZtPortalData> makeDocumentWithPool(const ZtString& customerId = "Kelvane") {
    auto document = makeDocument(customerId);
    document->addPool("CUSTOM", ZtDate());
    return document;
  }

  /// The request of `makeDocumentWithPool`, as it shows the customer.
  static std::string requestOf(const ZtPortalData& document, std::string_view customer) {
    return crlf(
        R"(<SOAP-ENV:Envelope xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/" xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" xmlns:xsd="http://www.w3.org/2001/XMLSchema">
  <SOAP-ENV:Body>
    <postPoolDatas xmlns:m="http://reporting.kelvane.example/portal" SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
       <reportData xsi:type="com_Report">
         <ReportID xsi:type="xsd:string">)" +
        std::string(document.reportId().view()) + R"(</ReportID>
         <MachineID xsi:type="xsd:string">{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}</MachineID>
         <CustomerID xsi:type="xsd:string">)" +
        std::string(customer) + R"(</CustomerID>
         <ApplicationID xsi:type="xsd:string">{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}</ApplicationID>
         <ApplicationVersion xsi:type="xsd:string">2.1.77</ApplicationVersion>
         <Datas xsi:type="com_Pools">
           <Data xsi:type="com_Pool" Pool="CUSTOM">
             <Date xsi:type="xsd:dateTime">(null)</Date>
             <Fields xsi:type="com_Fields"/>
           </Data>
         </Datas>
       </reportData>
    </postPoolDatas>
  </SOAP-ENV:Body>
</SOAP-ENV:Envelope>
)");
  }

  static std::string requestOf(const ZtPortalData& document) {
    return requestOf(document, "Kelvane");
  }

  void forget() {
    steps.clear();
    platform.http_.asked.clear();
    platform.broadcast_.posted.clear();
  }

  /// No server answers.
  void cutOff() { configuration = version = report = HttpResponse{}; }

  ScopedEnvironment zone{"TZ", "UTC"};
  ScopedEnvironment locale{"LC_ALL", "C"};
  FakePlatform platform;
  HttpResponse configuration{200,
                             "<configuration><defSOAP>http://report.test/soap</defSOAP>"
                             "<defTestSOAP>http://report.test/soap-test</defTestSOAP>"
                             "</configuration>"};
  HttpResponse version{200, "<versioninfo>7.1</versioninfo>"};
  HttpResponse report{200, kAccepted};
  std::function<HttpResponse(const std::string& body)> reportAnswer;  // goes before `report`
  std::vector<std::string> steps;

 private:
  HttpResponse answerTo(const FakeHttpTransport::Asked& asked) {
    if (!asked.body) {
      steps.push_back("GET " + asked.url);
      return configuration;
    }
    if (asked.body->find("<getVersionInfo") != std::string::npos) {
      steps.push_back("version " + asked.url);
      return version;
    }
    steps.push_back("report " + asked.url);
    return reportAnswer ? reportAnswer(*asked.body) : report;
  }
};

}  // namespace zt::test
