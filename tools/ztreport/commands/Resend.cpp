#include "tools/ztreport/commands/Resend.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "tools/ztreport/commands/Delivery.h"
#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/commands/Progress.h"
#include "tools/ztreport/commands/SavedReports.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

Exit resend(const std::string& configurationUrl) {
  if (configurationUrl.empty()) throw Failure(Exit::WrongInput, "--config-url: empty");
  const std::string folder = storeFolder();
  const std::vector<std::string> paths = savedReportPaths(folder);

  // One by one as ZtPortalData::sendSavedReports does it: that one is silent, and only who sends
  // can count what was sent when other programs save and resend at the same time.
  std::size_t sent = 0;
  if (!paths.empty()) {
    Progress progress(paths.size());
    const auto document =
        ZtPortalData::initWithValues(configurationUrl, false, nullptr, nullptr, nullptr);
    for (const std::string& path : paths) {
      if (!document->sendSavedReport(path)) break;
      std::error_code ignored;
      std::filesystem::remove(path, ignored);
      progress.show(++sent);
    }
  }
  const std::size_t left = savedReportPaths(folder).size();
  print(std::to_string(sent) + " sent, " + std::to_string(left) + " left\n");
  return left == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace zt::tools
