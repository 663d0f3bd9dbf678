// SPDX-License-Identifier: Apache-2.0
// resender URL: sends the reports that earlier runs of the example installer have saved, with the
// customer's configuration document at URL, and prints what became of each. Warnings of the
// library's log go to standard error. Exit status: 0 if no report is left, 1 otherwise.

#include <ztportal/portal/ZtReportStore.h>
#include <ztportal/system/ZtHost.h>

#include <chrono>
#include <iostream>
#include <string>
#include <string_view>

int main(int argc, char** argv) {
  ZtHost::setBundleInfo({{"CFBundleName", "Example Installer"},
                         {"CFBundleShortVersionString", "2.1"},
                         {"CFBundleVersion", "77"}});
  ZtHost::setLogHandler([](ZtLogLevel level, std::string_view module, std::string_view message) {
    if (level >= ZtLogLevel::Warning) std::cerr << module << ": " << message << '\n';
  });

  // A report may take longer than the usual two seconds, as long as something arrives.
  ZtTransportOptions transport;
  transport.timeout = std::chrono::minutes(1);
  transport.idleTimeout = std::chrono::seconds(5);
  transport.headers.emplace_back("X-Sender", "resender");
  const std::string wrong = ZtHost::setTransportOptions(transport);
  if (!wrong.empty()) {
    std::cerr << "resender: " << wrong << '\n';
    return 1;
  }

  const ZtReportStore store;
  ZtSendOptions options;
  options.configurationUrl = argc > 1 ? argv[1] : "";
  options.budget = std::chrono::minutes(5);
  options.progress = [](const ZtSavedReport& report, const ZtDelivery& delivery) {
    std::cout << report.reportId.view() << ": " << delivery.message << '\n';
    return true;  // go on
  };
  const ZtSendResult result = store.send(options);
  std::cout << result.accepted << " sent, " << result.left << " left\n";
  return result.left == 0 ? 0 : 1;
}
