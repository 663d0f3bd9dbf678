#pragma once

#include <httplib.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Child.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

/// A running ztinbox on a free port of the loopback interface, ended with its scope. It keeps its
/// reports in a folder of its own, removed with it, unless the options name another (`--data`). The
/// test links `zt_test_inbox`, which knows where the program stands.
///
///     zt::test::Inbox inbox({"--answer", "refuse"});
///     report->setUrl(inbox.configurationUrl());
///     …
///     inbox.behave(R"({"answer": "error:503"})");
///     EXPECT_EQ(inbox.reports().front()["customerId"], "Kelvane");
///
/// Every operation throws std::runtime_error when the inbox does not answer as expected.
class Inbox {
 public:
  explicit Inbox(std::vector<std::string> options = {})
      : _child(zt::test::paths::kInboxProgram, complete(std::move(options), _folder.path("data"))) {
    constexpr std::string_view kGreeting = "ztinbox: listening on ";
    const std::string line = _child.waitForLines(1);
    if (!line.starts_with(kGreeting)) {
      throw std::runtime_error("the inbox did not start: " + line + _child.waitForErrors());
    }
    _url = line.substr(kGreeting.size(), line.find('\n') - kGreeting.size());
  }

  /// "http://127.0.0.1:PORT"
  const std::string& url() const { return _url; }
  std::string configurationUrl() const { return _url + "/reporting/kelvane.xml"; }
  int port() const { return std::stoi(_url.substr(_url.rfind(':') + 1)); }

  /// Changes how reports are answered; what `json` does not name stays.
  void behave(const std::string& json) {
    auto client = newClient();
    expectSuccess(client.Put("/api/v1/behaviour", json, "application/json"), "behaviour");
  }

  /// Every report that is kept, newest first.
  nlohmann::json reports() {
    auto client = newClient();
    nlohmann::json all = nlohmann::json::array();
    std::string before;
    for (;;) {
      const auto result = client.Get("/api/v1/reports?limit=1000" + before);
      const auto page = nlohmann::json::parse(expectSuccess(result, "list of reports"));
      if (page.empty()) return all;
      all.insert(all.end(), page.begin(), page.end());
      before = "&before=" + std::to_string(page.back().at("number").get<std::uint64_t>());
    }
  }

  /// The bytes of report `number`.
  std::string raw(std::uint64_t number) {
    auto client = newClient();
    return expectSuccess(client.Get("/api/v1/reports/" + std::to_string(number) + "/raw"), "bytes");
  }

  /// Waits until `count` reports came in since the start or the last clear().
  void waitFor(std::uint64_t count, int seconds = 30) {
    auto client = newClient();
    client.set_read_timeout(seconds + 5);
    expectSuccess(client.Get("/api/v1/wait?count=" + std::to_string(count) +
                             "&timeout=" + std::to_string(seconds)),
                  "reports to come in");
  }

  /// Forgets every report.
  void clear() {
    auto client = newClient();
    expectSuccess(client.Delete("/api/v1/reports"), "deletion");
  }

  /// A client of this inbox, for requests that have no operation here.
  httplib::Client newClient() const {
    httplib::Client client(_url);
    client.set_tcp_nodelay(true);
    client.set_read_timeout(30);
    return client;
  }

  /// The program: its output so far, its end.
  Child& child() { return _child; }

 private:
  static std::vector<std::string> complete(std::vector<std::string> options,
                                           const std::string& folder) {
    options.insert(options.begin(), {"--listen", "127.0.0.1:0"});
    if (std::ranges::find(options, "--data") == options.end()) {
      options.insert(options.end(), {"--data", folder});
    }
    return options;
  }

  static std::string expectSuccess(const httplib::Result& result, const std::string& wanted) {
    if (!result) throw std::runtime_error("no answer from the inbox: " + wanted);
    if (result->status == 200) return result->body;
    throw std::runtime_error("the inbox did not give the " + wanted + ": " + result->body);
  }

  TemporaryFolder _folder;
  Child _child;
  std::string _url;
};

}  // namespace zt::test
