#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"

// The bytes of the three requests, and every answer that a broken network can make of a healthy
// one.

namespace zt::test {
namespace {

using std::chrono_literals::operator""s;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Clock = std::chrono::steady_clock;
using Then = LoopbackResponse::Then;

constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024;

class PortalOnTheWireTest : public RealPortalTest {};

/// `body` filled up to `size` within its root, in pieces: the parser takes neither 10 MB of text
/// in one piece nor as much behind the root.
std::string padded(const std::string& body, std::size_t size) {
  const std::string piece = std::string(65536, ' ') + "<!---->";
  const std::size_t end = body.rfind("</");
  std::string whole = body.substr(0, end);
  while (size - whole.size() > piece.size() + body.size()) whole += piece;
  whole.append(size - whole.size() - (body.size() - end), ' ');
  return whole + body.substr(end);
}

std::string headOf(const std::string& requestLine, const std::string& host) {
  return requestLine + " HTTP/1.1\r\nHost: " + host +
         "\r\nAccept: */*\r\nContent-Type: application/xml\r\n"
         "User-Agent: Kelvane portal service (osx)\r\n";
}

std::string postOf(const std::string& host, const std::string& body) {
  return headOf("POST /soap", host) + "Content-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

TEST_F(PortalOnTheWireTest, ThreeRequestsOfTheseBytesAreMade) {
  const ReportingServer server;
  const auto document = makeReport(server.configurationUrl());
  ASSERT_TRUE(document->reportToServer());
  EXPECT_THAT(
      server.requests(),
      ElementsAre(
          headOf("GET /reporting/kelvane.xml", server.host()) + "\r\n",
          postOf(server.host(),
                 "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\" "
                 "xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\" "
                 "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                 "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\">  <SOAP-ENV:Body>"
                 "    <getVersionInfo xmlns:m=\"http://reporting.kelvane.example/portal\" "
                 "SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding\"/>"
                 "  </SOAP-ENV:Body></SOAP-ENV:Envelope>"),
          postOf(server.host(), document->getSoapString())));
  EXPECT_EQ(document->serverVersion(), "7.3");
}

/// An answer that is not the healthy one. `body` is the healthy one's.
struct Fault {
  const char* name;
  std::function<LoopbackResponse(const std::string& body, const std::string& host)> answer;
};

std::string half(const std::string& body) {
  const std::string whole = success(body).bytes;
  return whole.substr(0, whole.size() - body.size() / 2);
}

/// All of `body`, of which one byte more was announced.
std::string unfinished(const std::string& body) {
  std::string whole = success(body + '\n').bytes;
  whole.pop_back();
  return whole;
}

const std::vector<Fault>& faults() {
  static const std::vector<Fault> all = {
      {"half a body",
       [](auto& body, auto&) {
         return LoopbackResponse{half(body), Then::Close};
       }},
      {"a body without its last byte",
       [](auto& body, auto&) {
         return LoopbackResponse{unfinished(body), Then::Close};
       }},
      {"a reset before the last byte",
       [](auto& body, auto&) {
         return LoopbackResponse{unfinished(body), Then::Reset};
       }},
      {"half a head",
       [](auto&, auto&) {
         return LoopbackResponse{"HTTP/1.1 200 OK\r\nContent-Le", Then::Close};
       }},
      {"no byte",
       [](auto&, auto&) {
         return LoopbackResponse{"", Then::Close};
       }},
      {"a reset",
       [](auto&, auto&) {
         return LoopbackResponse{"", Then::Reset};
       }},
      {"silence",
       [](auto&, auto&) {
         return LoopbackResponse{"", Then::Hang};
       }},
      {"silence before the last byte",
       [](auto& body, auto&) {
         return LoopbackResponse{unfinished(body), Then::Hang};
       }},
      {"no HTTP",
       [](auto& body, auto&) {
         return LoopbackResponse{body, Then::Close};
       }},
      {"nothing in it", [](auto&, auto&) { return success(""); }},
      {"invalid UTF-8", [](auto& body, auto&) { return success(body + "<!--\xff-->"); }},
      {"one byte more than 16 MiB",
       [](auto& body, auto&) { return success(padded(body, kLargest + 1)); }},
      {"a redirect to ftp",
       [](auto&, auto& host) {
         return LoopbackResponse{"HTTP/1.1 302 Found\r\nLocation: ftp://" + host +
                                 "/answer.xml\r\nContent-Length: 0\r\n\r\n"};
       }},
      {"a redirect without an end",
       [](auto&, auto& host) {
         return LoopbackResponse{"HTTP/1.1 307 Temporary Redirect\r\nLocation: http://" + host +
                                 "/soap\r\nContent-Length: 0\r\n\r\n"};
       }},
      {"status 500 with the right body",
       [](auto& body, auto&) {
         return LoopbackResponse{"HTTP/1.1 500 Internal Server Error\r\nContent-Length: " +
                                 std::to_string(body.size()) + "\r\n\r\n" + body};
       }},
  };
  return all;
}

struct Life {
  bool gotConfiguration = false;
  bool online = false;
  bool accepted = false;

  friend bool operator==(const Life&, const Life&) = default;
};

Life lifeOf(ZtPortalData& document) {
  const bool accepted = document.reportToServer();
  return {document.gotConfiguration(), document.online(), accepted};
}

std::ostream& operator<<(std::ostream& out, const Life& life) {
  return out << "configured " << life.gotConfiguration << ", online " << life.online
             << ", accepted " << life.accepted;
}

class PortalOnABrokenWireTest : public PortalOnTheWireTest {
 protected:
  void expectEachFaultToEndIn(RequestKind asked, const Life& expected) {
    for (const Fault& fault : faults()) {
      SCOPED_TRACE(std::string(fault.name) + " for the " + nameOf(asked));
      ReportingServer server;
      server.setResponse(asked, fault.answer(server.healthyBody(asked), server.host()));
      const auto start = Clock::now();
      const auto document = makeReport(server.configurationUrl());
      const auto made = Clock::now();
      EXPECT_LT(made - start, 4s);
      EXPECT_EQ(lifeOf(*document), expected);
      EXPECT_LT(Clock::now() - made, 4s);
      if (expected.accepted) {
        EXPECT_THAT(stored(), IsEmpty());
      } else {
        EXPECT_EQ(content(fileOf(*document)), document->getSoapString());
      }
      const auto requests = server.requests();
      EXPECT_EQ(std::ranges::count(requests, RequestKind::Report, kindOf) > 0,
                expected.gotConfiguration);
    }
  }
};

TEST_F(PortalOnABrokenWireTest, WithoutAConfigurationNothingIsSent) {
  expectEachFaultToEndIn(RequestKind::Configuration, {false, false, false});
}

TEST_F(PortalOnABrokenWireTest, WithoutAVersionTheReportIsSentAllTheSame) {
  expectEachFaultToEndIn(RequestKind::Version, {true, false, true});
}

TEST_F(PortalOnABrokenWireTest, WithoutAnAcceptanceTheReportIsSaved) {
  expectEachFaultToEndIn(RequestKind::Report, {true, true, false});
}

TEST_F(PortalOnTheWireTest, AnAnswerOf16MiBIsTaken) {
  for (const RequestKind asked :
       {RequestKind::Configuration, RequestKind::Version, RequestKind::Report}) {
    SCOPED_TRACE(nameOf(asked));
    ReportingServer server;
    server.setResponse(asked, success(padded(server.healthyBody(asked), kLargest)));
    EXPECT_EQ(lifeOf(*makeReport(server.configurationUrl())), (Life{true, true, true}));
  }
}

TEST_F(PortalOnTheWireTest, ARedirectToHttpIsFollowed) {
  const ReportingServer server;
  ReportingServer redirecting;
  redirecting.setResponse(RequestKind::Configuration,
                          {"HTTP/1.1 302 Found\r\nLocation: " + server.configurationUrl() +
                           "\r\nContent-Length: 0\r\n\r\n"});
  EXPECT_EQ(lifeOf(*makeReport(redirecting.configurationUrl())), (Life{true, true, true}));
}

}  // namespace
}  // namespace zt::test
