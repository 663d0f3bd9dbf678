#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
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
    return "not sent: " + whyNotAccepted(document, report.size.value_or(0));
  }
  return "cannot be sent: " + report.fault +
         "; ztreport store --set-aside can move it out of the way";
}

}  // namespace

Exit resend(const std::string& configurationUrl, Output output) {
  checkConfigurationUrl(configurationUrl);
  requireConsent();
  const std::string folder = storeFolder();
  const std::vector<std::string> paths = savedReportPaths(folder);

  // ZtPortalData::sendSavedReports does the same, but does not say how many reports it sent.
  std::size_t sent = 0;
  std::shared_ptr<ZtPortalData> document;
  if (!paths.empty()) {
    const Progress progress(paths.size(), output != Output::Quiet);
    document = ZtPortalData::initWithValues(configurationUrl, false, nullptr, nullptr, nullptr);
    while (sent < paths.size() && document->sendSavedReport(paths[sent])) {
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
  const std::size_t left = savedReportPaths(folder).size();
  result["left"] = left;
  tell(output, std::to_string(sent) + " sent, " + std::to_string(left) + " left", result);
  return left == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace zt::tools
