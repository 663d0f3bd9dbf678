// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/LoopbackClient.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

/// A report as the inbox lists it.
struct InboxReport {
  std::uint64_t number = 0;
  std::uint64_t size = 0;
  std::string answer;
  bool isTest = false;
  std::string reportId;
  std::string machineId;
  std::string customerId;
  std::string applicationId;
  std::string applicationVersion;
  std::vector<std::string> pools;
  std::uint64_t duplicateOf = 0;  ///< 0: of none
};

/// A running ztinbox on a free loopback port, which ends with its scope. It stores its reports in a
/// temporary folder, unless the options name another place (`--data`, `--store`).
///
///     zt::test::Inbox inbox({"--answer", "refuse"});
///     report->setUrl(inbox.configurationUrl());
///     …
///     inbox.behave(R"({"answer": "error:503"})");
///     EXPECT_EQ(inbox.reports().front().customerId, "Kelvane");
///
/// Every operation throws std::runtime_error if the inbox does not respond as expected.
class Inbox {
 public:
  explicit Inbox(std::vector<std::string> options = {});

  /// "http://127.0.0.1:PORT"
  const std::string& url() const { return _url; }
  std::string configurationUrl() const { return _url + "/reporting/kelvane.xml"; }
  int port() const;

  /// Posts a report; the body of the response, empty when there is none.
  std::string post(const std::string& report, const std::string& path = "/soap") const;
  /// Changes how reports are answered; settings that `json` does not name stay.
  void behave(const std::string& json) const;
  /// All stored reports, newest first.
  std::vector<InboxReport> reports() const;
  /// The newest 1,000 of them as the API lists them, in JSON.
  std::string reportList() const;
  /// The bytes of report `number`.
  std::string raw(std::uint64_t number) const;
  /// Waits until `count` reports have arrived since the start or the last clear().
  void waitFor(std::uint64_t count, int seconds = 30) const;
  /// Deletes every report.
  void clear() const;

  HttpClient newClient() const { return HttpClient(port()); }
  Subprocess& process() { return _process; }

 private:
  TemporaryFolder _folder;
  Subprocess _process;
  std::string _url;
};

}  // namespace zt::test
