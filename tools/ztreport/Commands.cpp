#include "tools/ztreport/Commands.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>
#include <system_error>

#include "tools/ztreport/Delivery.h"
#include "tools/ztreport/Description.h"
#include "tools/ztreport/InputOutput.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

Description describe(const std::string& file) try {
  return Description(readAll(file));
} catch (const JsonError& error) {
  throw Failure(Exit::WrongInput, nameOf(file) + ": " + error.what());
}

Description describeForDelivery(const std::string& file) {
  Description description = describe(file);
  if (description.hasPools()) return description;
  throw Failure(Exit::WrongInput,
                nameOf(file) + ": /pools: a report without a pool has no text to deliver");
}

std::size_t savedReports(const std::string& folder) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  if (error) throw Failure(Exit::MachineFailed, folder + ": " + error.message());
  return static_cast<std::size_t>(std::count_if(begin(entries), end(entries),
                                                [](const std::filesystem::directory_entry& entry) {
                                                  return entry.path().native().ends_with(".ztr");
                                                }));
}

}  // namespace

Exit render(const std::string& file, bool plain) {
  const auto document = describe(file).makeOffline();
  print(plain ? document->generateXml(nullptr, false) : document->getSoapString());
  return Exit::Done;
}

Exit send(const std::string& file, const std::string& configurationUrl) {
  const Description description = describeForDelivery(file);
  const ZtString url =
      configurationUrl.empty() ? description.configurationUrl() : ZtString(configurationUrl);
  if (url.empty()) {
    throw Failure(Exit::WrongInput,
                  nameOf(file) + ": /configurationUrl: absent, and no --config-url is given");
  }
  const auto document = description.makeOnline(url);
  return tellDelivery(*document, document->reportToServer());
}

Exit save(const std::string& file) {
  const auto document = describeForDelivery(file).makeOffline();
  storeFolder();
  document->saveReport();
  return tellSaved(*document);
}

Exit resend(const std::string& configurationUrl) {
  if (configurationUrl.empty()) throw Failure(Exit::WrongInput, "--config-url: empty");
  const std::string folder = storeFolder();
  const std::size_t before = savedReports(folder);
  if (before != 0) {
    ZtPortalData::initWithValues(configurationUrl, false, nullptr, nullptr, nullptr)
        ->sendSavedReports();
  }
  const std::size_t left = savedReports(folder);
  const std::size_t sent = before - std::min(before, left);
  print(std::to_string(sent) + " sent, " + std::to_string(left) + " left\n");
  return left == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace zt::tools
