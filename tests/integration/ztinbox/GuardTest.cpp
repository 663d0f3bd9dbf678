// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>

#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

namespace zt::test {
namespace {

/// The status line and the body of the response to a request without a body.
class Asked {
 public:
  Asked(const Inbox& inbox, const std::string& method, const std::string& target,
        const std::string& headers) {
    RawClient client(inbox.port());
    EXPECT_TRUE(client.send(method + " " + target + " HTTP/1.1\r\n" + headers +
                            "Connection: close\r\n\r\n"));
    const std::string answer = client.receiveAll();
    status = answer.substr(0, answer.find("\r\n"));
    body = answer.substr(answer.find("\r\n\r\n") + 4);
  }

  std::string status;
  std::string body;
};

constexpr const char* kForbidden = "HTTP/1.1 403 Forbidden";
constexpr const char* kOkLine = "HTTP/1.1 200 OK";

TEST(GuardTest, AForeignHostSeesNeitherPageNorApi) {
  const Inbox inbox;
  const std::string own = inbox.url().substr(7);
  const std::string port = std::to_string(inbox.port());
  for (const std::string& host :
       {std::string("evil.example"), "evil.example:" + port, std::string("127.0.0.1"),
        std::string("127.0.0.1:1"), std::string(""), "localhost.evil.example:" + port}) {
    for (const char* path : {"/", "/page/app.mjs", "/%70age/app.mjs", "/page%2fapp.mjs"}) {
      const Asked page(inbox, "GET", path, "Host: " + host + "\r\n");
      EXPECT_EQ(page.status, kForbidden) << host << path;
      EXPECT_EQ(page.body, "foreign host\n") << host << path;
    }
    for (const char* path :
         {"/api/v1/reports", "/%61pi/v1/reports", "/%61%70%69/v1/wait?count=0",
          "/api%2fv1/behaviour", "/api/v1/nothing", "/%61pi/v1/%65vents", "/api/v1/%73tats",
          "/api/v1/reports/1/%72aw", "/%61%70%69%2fv1%2fopenapi.json"}) {
      const Asked api(inbox, "GET", path, "Host: " + host + "\r\n");
      EXPECT_EQ(api.status, kForbidden) << host << path;
      EXPECT_TRUE(api.body.starts_with(R"({"detail":"foreign host",)")) << host << path;
    }
  }
  for (const std::string& host : {own, "LOCALHOST:" + port, "[::1]:" + port}) {
    EXPECT_EQ(Asked(inbox, "GET", "/", "Host: " + host + "\r\n").status, kOkLine) << host;
    EXPECT_EQ(Asked(inbox, "GET", "/%61pi/v1/reports", "Host: " + host + "\r\n").body, "[]\n");
  }
}

TEST(GuardTest, EveryHostHeaderCountsAndOneIsNeeded) {
  const Inbox inbox;
  const std::string own = "Host: " + inbox.url().substr(7) + "\r\n";
  EXPECT_EQ(Asked(inbox, "GET", "/api/v1/reports", "").status, kForbidden);
  EXPECT_EQ(Asked(inbox, "GET", "/api/v1/reports", own + "Host: evil.example\r\n").status,
            kForbidden);
}

TEST(GuardTest, AForeignOriginSeesNeitherPageNorApi) {
  const Inbox inbox;
  const std::string own = "Host: " + inbox.url().substr(7) + "\r\n";
  for (const char* origin :
       {"http://evil.example", "null", "https://127.0.0.1", "http://127.0.0.1"}) {
    const std::string headers = own + "Origin: " + origin + "\r\n";
    EXPECT_EQ(Asked(inbox, "GET", "/", headers).body, "foreign origin\n") << origin;
    const Asked api(inbox, "DELETE", "/%61pi/v1/reports", headers);
    EXPECT_EQ(api.status, kForbidden) << origin;
    EXPECT_TRUE(api.body.starts_with(R"({"detail":"foreign origin",)")) << origin;
  }
  EXPECT_EQ(Asked(inbox, "GET", "/api/v1/reports", own + "Origin: " + inbox.url() + "\r\n").status,
            kOkLine);
}

TEST(GuardTest, TheProxyFormDoesNotLeadAroundIt) {
  const Inbox inbox;
  const std::string own = "Host: " + inbox.url().substr(7) + "\r\n";
  for (const char* target :
       {"http://evil.example/api/v1/reports", "http://evil.example/%61pi/v1/reports",
        "http://evil.example/", "http://evil.example", "HTTP://evil.example/api/v1/reports"}) {
    EXPECT_EQ(Asked(inbox, "GET", target, own).status, kForbidden) << target;
    EXPECT_EQ(Asked(inbox, "GET", target, "Host: evil.example\r\n").status, kForbidden) << target;
  }
  EXPECT_EQ(Asked(inbox, "GET", inbox.url() + "/api/v1/reports", "Host: evil.example\r\n").status,
            kForbidden);
  EXPECT_EQ(Asked(inbox, "GET", inbox.url() + "/api/v1/reports", own).body, "[]\n");
  for (const char* target : {"http://evil%2fapi/v1/reports", "http:///api/v1/reports",
                             "//api/v1/reports", "api/v1/reports"}) {
    EXPECT_NE(Asked(inbox, "GET", target, "Host: evil.example\r\n").status, kOkLine) << target;
  }
}

TEST(GuardTest, ReportingClientsMayUseAnyHost) {
  const Inbox inbox;
  const std::string headers = "Host: evil.example\r\n";
  EXPECT_EQ(Asked(inbox, "GET", "/reporting/kelvane.xml", headers).status, kOkLine);
  EXPECT_EQ(Asked(inbox, "GET", "/nothing", headers).status, "HTTP/1.1 404 Not Found");
  RawClient client(inbox.port());
  const std::string report = SampleReport().text();
  ASSERT_TRUE(client.send(postRequest("/soap", report, headers + "Connection: close\r\n")));
  EXPECT_TRUE(client.receiveAll().starts_with(kOkLine));
}

TEST(GuardTest, NoWebsiteCanSendReports) {
  // Any page in the user's browser could once post reports until all others were deleted.
  const Inbox inbox;
  const struct {
    std::string headers;
    bool isAllowed;
  } rows[] = {
      {"Origin: http://evil.example\r\n", false},
      {"Origin: null\r\n", false},
      {"Origin: http://localhost:1\r\nSec-Fetch-Site: same-site\r\n", false},
      {"Origin: " + inbox.url() + "\r\nOrigin: http://evil.example\r\n", false},
      {"Sec-Fetch-Site: cross-site\r\n", false},
      {"Sec-Fetch-Site: same-site\r\n", false},
      {"Sec-Fetch-Site: none\r\n", true},
      {"Origin: " + inbox.url() + "\r\nSec-Fetch-Site: same-origin\r\n", true},
      {"", true},
  };
  std::size_t allowed = 0;
  for (const auto& row : rows) {
    for (const char* target : {"/soap", "/soap-test", "/%73oap", "http://evil.example/soap"}) {
      RawClient client(inbox.port());
      const std::string headers = row.headers + "Connection: close\r\n";
      ASSERT_TRUE(client.send(postRequest(target, SampleReport().text(), headers)));
      const std::string answer = client.receiveAll();
      EXPECT_TRUE(answer.starts_with(row.isAllowed ? kOkLine : kForbidden))
          << row.headers << answer;
    }
    if (row.isAllowed) allowed += 4;
  }
  EXPECT_EQ(inbox.reports().size(), allowed);
}

TEST(GuardTest, TheBodyOfARefusedRequestIsNoRequest) {
  Inbox inbox;
  RawClient client(inbox.port());
  const std::string hidden = "DELETE /api/v1/reports HTTP/1.1\r\nHost: " + inbox.url().substr(7) +
                             "\r\nConnection: close\r\n\r\n";
  ASSERT_TRUE(
      client.send("PUT /api/v1/behaviour HTTP/1.1\r\nHost: evil.example\r\nContent-Length: " +
                  std::to_string(hidden.size()) + "\r\n\r\n" + hidden));
  const std::string answers = client.receiveAll();
  EXPECT_TRUE(answers.starts_with(kForbidden)) << answers;
  EXPECT_EQ(answers.find("HTTP/1.1", 1), std::string::npos) << answers;
}

}  // namespace
}  // namespace zt::test
