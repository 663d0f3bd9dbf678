#pragma once

#include <memory>
#include <optional>
#include <string>

#include "tools/ztreport/doctor/WebAddress.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// What is examined, and what earlier checks have learnt for later ones.
struct Patient {
  std::string configurationUrl;
  std::string appName;

  std::optional<WebAddress> configuration;  // the parts of a URL that can be used
  std::shared_ptr<ZtPortalData> document;   // has read the configuration and asked for the version
  bool isInTestMode = false;
  std::optional<WebAddress> server;  // where reports go
  std::string storeFolder;           // empty when there is none
};

}  // namespace zt::tools
