// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/LoopbackServer.h"
#include "ztportal/portal/RequestText.h"

// The bytes of the three requests, and every response into which a broken network can turn a
// healthy one.

namespace zt::test {
namespace {

using std::chrono_literals::operator""s;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Clock = std::chrono::steady_clock;
using Then = LoopbackResponse::Then;

constexpr std::size_t kLargest = std::size_t{16} * 1024 * 1024;

class PortalOnTheWireTest : public RealPortalTest {};

/// `body` filled up to `size` inside its root, in pieces: the parser accepts neither 10 MB of text
/// in one piece nor as much after the root.
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

TEST_F(PortalOnTheWireTest, TheThreeRequestsByteForByte) {
  const ReportingServer server;
  const auto document = makeReport(server.configurationUrl());
  ASSERT_TRUE(document->reportToServer());
  EXPECT_THAT(server.requests(),
              ElementsAre(headOf("GET /reporting/kelvane.xml", server.host()) + "\r\n",
                          postOf(server.host(), versionRequest()),
                          postOf(server.host(), document->getSoapString())));
  EXPECT_EQ(document->serverVersion(), "7.3");
}

/// Every response other than the healthy one with `body`, by name.
std::vector<std::pair<const char*, LoopbackResponse>> faults(const std::string& body,
                                                             const std::string& host) {
  const std::string whole = success(body).bytes;
  const std::string half = whole.substr(0, whole.size() - body.size() / 2);
  std::string unfinished = success(body + '\n').bytes;  // one byte less than announced
  unfinished.pop_back();
  const std::string length = "\r\nContent-Length: ";
  return {
      {"half a body", {half, Then::Close}},
      {"a body without its last byte", {unfinished, Then::Close}},
      {"a reset before the last byte", {unfinished, Then::Reset}},
      {"half a head", {"HTTP/1.1 200 OK\r\nContent-Le", Then::Close}},
      {"no byte", {"", Then::Close}},
      {"a reset", {"", Then::Reset}},
      {"silence", {"", Then::Hang}},
      {"silence before the last byte", {unfinished, Then::Hang}},
      {"no HTTP", {body, Then::Close}},
      {"an empty body", success("")},
      {"invalid UTF-8", success(body + "<!--\xff-->")},
      {"a redirect to ftp",
       {"HTTP/1.1 302 Found\r\nLocation: ftp://" + host + "/file.xml" + length + "0\r\n\r\n"}},
      {"an endless redirect",
       {"HTTP/1.1 307 Temporary Redirect\r\nLocation: http://" + host + "/soap" + length +
        "0\r\n\r\n"}},
      {"status 500 with the right body",
       {"HTTP/1.1 500 Internal Server Error" + length + std::to_string(body.size()) + "\r\n\r\n" +
        body}},
  };
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
    ReportingServer server;
    for (const auto& [name, response] : faults(server.healthyBody(asked), server.host())) {
      SCOPED_TRACE(std::string(name) + " for the " + nameOf(asked));
      server.setResponse(asked, response);
      const std::size_t before = server.requests().size();
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
      auto requests = server.requests();
      requests.erase(requests.begin(), requests.begin() + static_cast<std::ptrdiff_t>(before));
      EXPECT_EQ(std::ranges::count(requests, RequestKind::Report, kindOf) > 0,
                expected.gotConfiguration);
    }
  }
};

TEST_F(PortalOnABrokenWireTest, WithoutAConfigurationNothingIsSent) {
  expectEachFaultToEndIn(RequestKind::Configuration, {false, false, false});
}

TEST_F(PortalOnABrokenWireTest, WithoutAVersionTheReportIsStillSent) {
  expectEachFaultToEndIn(RequestKind::Version, {true, false, true});
}

TEST_F(PortalOnABrokenWireTest, WithoutAnAcceptanceTheReportIsSaved) {
  expectEachFaultToEndIn(RequestKind::Report, {true, true, false});
}

TEST_F(PortalOnTheWireTest, AResponseOf16MiBIsAccepted) {
  for (const RequestKind asked :
       {RequestKind::Configuration, RequestKind::Version, RequestKind::Report}) {
    SCOPED_TRACE(nameOf(asked));
    ReportingServer server;
    server.setResponse(asked, success(padded(server.healthyBody(asked), kLargest)));
    EXPECT_EQ(lifeOf(*makeReport(server.configurationUrl())), (Life{true, true, true}));
  }
}

// A report was saved, and sent again, although the server had accepted it in a long response.
TEST_F(PortalOnTheWireTest, OfALongerResponseTheFirst16MiBCount) {
  const std::string rest(kLargest + 1, '\xff');
  ReportingServer server;
  server.setResponse(RequestKind::Report, success(server.healthyBody(RequestKind::Report) + rest));
  EXPECT_EQ(lifeOf(*makeReport(server.configurationUrl())), (Life{true, true, false}));
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
