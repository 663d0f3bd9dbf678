#include "tools/ztreport/Commands.h"

#include <string>

#include "tools/ztreport/commands/Delivery.h"
#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/description/Description.h"
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

}  // namespace zt::tools
