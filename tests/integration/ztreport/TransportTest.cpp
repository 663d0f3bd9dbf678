// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/integration/ztreport/DoctorTest.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"

// The options of ztreport for its requests, and of the library's with them.

namespace zt::test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;

class TransportTest : public DoctorTest {
 protected:
  Finished send(const std::string& url, std::vector<std::string> options) const {
    options.insert(options.begin(), {"send", _file, "--config-url", url});
    return program.run(options);
  }

 private:
  std::string _file = program.write("report.json", describedFlatReport());
};

/// Serves a configuration that points at itself, and accepts every report.
LoopbackServer::Handler reportingServer(const LoopbackServer*& server) {
  return [&server](const std::string& request) -> LoopbackResponse {
    std::string body = "<versioninfo>7.1</versioninfo>";
    if (request.starts_with("GET")) {
      body = "<configuration><defSOAP>" + server->url("/soap") + "</defSOAP></configuration>";
    } else if (request.find("getVersionInfo") == std::string::npos) {
      body = "<postPoolDatasResponse>true</postPoolDatasResponse>";
    }
    return {"HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
            body};
  };
}

TEST_F(TransportTest, EachRequestHasTheHeaders) {
  const LoopbackServer* self = nullptr;
  const LoopbackServer server(reportingServer(self));
  self = &server;
  const std::vector<std::string> headers{"--header", "X-One: 1 2", "--header", "X-Two:3"};
  EXPECT_EQ(send(server.url("/"), headers).status, 0);
  EXPECT_EQ(examine(server.url("/"), headers).findings.at("version answer"), "ok: 7.1");
  EXPECT_THAT(server.requests(),
              Each(AllOf(HasSubstr("\r\nX-One: 1 2\r\n"), HasSubstr("\r\nX-Two: 3\r\n"))));
}

TEST_F(TransportTest, AReportIsCompressed) {
  const LoopbackServer* self = nullptr;
  const LoopbackServer server(reportingServer(self));
  self = &server;
  EXPECT_EQ(send(server.url("/"), {"--gzip"}).status, 0);
  EXPECT_THAT(server.requests().back(), HasSubstr("\r\nContent-Encoding: gzip\r\n"));
}

TEST_F(TransportTest, TheProxyGoesBeforeThatOfTheEnvironment) {
  const Inbox inbox;
  const LoopbackPort nobody(LoopbackPort::Refuses);
  program.setVariable("http_proxy=" + nobody.url());
  const std::string elsewhere = "http://config.invalid/reporting/kelvane.xml";
  EXPECT_EQ(send(elsewhere, {"--proxy", inbox.url()}).status, 0);
  EXPECT_EQ(send(inbox.configurationUrl(), {"--proxy", ""}).status, 0);
  EXPECT_EQ(send(inbox.configurationUrl(), {}).status, 1);

  EXPECT_THAT(examine(elsewhere, {"--proxy", inbox.url()}).findings.at("proxy"),
              HasSubstr("because of --proxy"));
  EXPECT_EQ(examine(inbox.configurationUrl(), {"--proxy", ""}).findings.at("proxy"),
            "ok: none, because of --proxy");
  EXPECT_THAT(examine(elsewhere, {"--proxy", nobody.url()}).findings.at("proxy"),
              HasSubstr("start the proxy, leave out --proxy, or name config.invalid in no_proxy"));
}

TEST_F(TransportTest, TheTimeoutIsThatOfEachRequest) {
  const LoopbackServer server([](const std::string&) {
    return LoopbackResponse{"", LoopbackResponse::Then::Hang};
  });
  EXPECT_THAT(send(server.url("/"), {"--timeout", "1"}).errors,
              HasSubstr("no response within 1 second"));
}

TEST_F(TransportTest, RefusesWrongValues) {
  const std::string file = program.write("no.pem", "garbage");
  const struct {
    std::vector<std::string> options;
    std::string message;
  } rows[] = {
      {{"--ca", "/nonexistent/ca.pem"}, "--ca: /nonexistent/ca.pem cannot be read"},
      {{"--ca", file}, "--ca: " + file + " contains no CERTIFICATE----- in PEM form"},
      {{"--proxy", "ftp://ada:secret@h"},
       "--proxy: the value is not the URL of an http, https or socks proxy"},
      {{"--timeout", "0"}, "--timeout: without a limit only if there is an idleTimeout"},
      {{"--header", "secret"}, "--header: expected NAME: VALUE"},
      {{"--header", "Host: x"}, "--header: Host is set by the library"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(send("http://127.0.0.1:1/", row.options),
              refused(2, row.message + "; see ztreport send --help"));
  }
}

}  // namespace
}  // namespace zt::test
