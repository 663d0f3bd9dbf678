// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>

#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/Delivery.h"
#include "tools/ztreport/commands/SavedReports.h"

namespace zt::tools {

namespace {

// ECMA-48: return to the first column and erase the line.
constexpr const char* kEraseLine = "\r\033[K";

bool isTerminal() {
  const char* const kind = ::getenv("TERM");
  return kind != nullptr && std::string_view(kind) != "dumb" && ::isatty(STDERR_FILENO) == 1;
}

/// Progress of sending, as one line on a terminal at standard error that is rewritten in place and
/// erased at the end. Nothing is written when standard error is not a terminal, or is one that
/// cannot rewrite a line (`TERM` is "dumb" or unset).
class Progress {
 public:
  Progress(std::size_t all, bool isWanted) : _all(all), _isShown(isWanted && isTerminal()) {
    show(0);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() {
    if (_isShown) std::fputs(kEraseLine, stderr);
  }

  void show(std::size_t sent) const {
    if (!_isShown) return;
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - _start;
    const double rate = sent == 0 ? 0 : static_cast<double>(sent) / passed.count();
    std::fprintf(stderr, "%s%zu sent, %zu left, %.1f a second", kEraseLine, sent, _all - sent,
                 rate);
    std::fflush(stderr);
  }

 private:
  const std::size_t _all;
  const bool _isShown;
  const std::chrono::steady_clock::time_point _start = std::chrono::steady_clock::now();
};

/// Why `document` did not send the saved report `file`.
std::string whyStopped(ZtPortalData& document, const std::string& file) {
  const SavedReport report = savedReport(file);
  if (report.fault.empty() || !document.online()) {
    return "not sent: " + whyNotAccepted(document);
  }
  return "cannot be sent: " + report.fault +
         "; ztreport store --set-aside can move it out of the way";
}

/// What `ZtReportStore::send` has ended with, if that needs a word.
std::string reasonOf(const ZtSendResult& result) {
  constexpr std::array<const char*, 8> kReasons{"",
                                                "",
                                                "",
                                                "the server cannot be reached",
                                                "the server asks to try again later",
                                                "another process is sending the reports",
                                                "the store's folder cannot be used",
                                                "the user has revoked the consent"};
  std::string reason = kReasons.at(static_cast<std::size_t>(result.end));
  if (result.retryAfter.count() > 0) {
    reason += ", in " + std::to_string(result.retryAfter.count()) + " seconds";
  }
  return reason;
}

/// Sends the reports so that none of them keeps others back.
Exit resendAll(const std::string& configurationUrl, const ResendOptions& options, Output output) {
  const ZtReportStore store;
  std::size_t tried = 0;
  std::size_t accepted = 0;
  std::map<std::string, std::string> messages;  // the last one for each file
  Json deliveries = Json::array();
  ZtSendOptions sending;
  sending.configurationUrl = configurationUrl;
  sending.retry = options.retry;
  ZtSendResult result;
  {
    const Progress progress(store.list().size(), output != Output::Quiet);
    sending.progress = [&](const ZtSavedReport& report, const ZtDelivery& delivery) {
      if (delivery.outcome == ZtDeliveryOutcome::Accepted) {
        progress.show(++accepted);
        messages.erase(report.path);
      } else {
        messages[report.path] = report.path + ": not sent: " + delivery.message;
      }
      deliveries.push_back({{"file", report.path}, {"delivery", jsonOfDelivery(delivery)}});
      return ++tried != options.limit;
    };
    result = store.send(sending);
  }
  for (const auto& [file, message] : messages) complain(message);
  const std::string reason = reasonOf(result);
  if (!reason.empty()) complain(reason);
  Json object{{"sent", result.accepted}, {"setAside", result.setAside}, {"left", result.left}};
  if (!reason.empty()) object["reason"] = reason;
  if (output == Output::Receipts) object["deliveries"] = deliveries;
  tell(output,
       std::to_string(result.accepted) + " sent, " + std::to_string(result.setAside) +
           " set aside, " + std::to_string(result.left) + " left",
       object);
  return result.left == 0 && result.setAside == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace

Exit resend(const std::string& configurationUrl, const ResendOptions& options, Output output) {
  checkConfigurationUrl(configurationUrl);
  requireConsent();
  const std::string folder = storeFolder();
  if (options.skipUnsendable || options.retry) return resendAll(configurationUrl, options, output);
  std::vector<std::string> paths = savedReportPaths(folder);
  if (options.limit != 0 && paths.size() > options.limit) paths.resize(options.limit);

  // ZtPortalData::sendSavedReports does the same, but does not say how many reports it sent.
  std::size_t sent = 0;
  std::shared_ptr<ZtPortalData> document;
  Json deliveries = Json::array();
  if (!paths.empty()) {
    const Progress progress(paths.size(), output != Output::Quiet);
    document = ZtPortalData::initWithValues(configurationUrl, false, nullptr, nullptr, nullptr);
    while (sent < paths.size()) {
      const bool accepted = document->sendSavedReport(paths[sent]);
      deliveries.push_back(
          {{"file", paths[sent]}, {"delivery", jsonOfDelivery(document->lastDelivery())}});
      if (!accepted) break;
      std::error_code ignored;
      std::filesystem::remove(paths[sent], ignored);
      progress.show(++sent);
    }
  }
  Json result{{"sent", sent}, {"left", nullptr}};
  if (sent < paths.size()) {
    const std::string& file = paths[sent];
    const std::string reason = whyStopped(*document, file);
    complain(file + ": " + reason);
    result["stoppedBy"] = {{"file", file}, {"reason", reason}};
  }
  if (output == Output::Receipts) result["deliveries"] = deliveries;
  const std::size_t left = savedReportPaths(folder).size();
  result["left"] = left;
  tell(output, std::to_string(sent) + " sent, " + std::to_string(left) + " left", result);
  return left == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace zt::tools
