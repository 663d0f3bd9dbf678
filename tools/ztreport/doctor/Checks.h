// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tools/ztreport/network/WebAddress.h"
#include "ztportal/ztportal.h"

// The checks of `ztreport doctor`, in the order of the table in Doctor.cpp.

namespace zt::tools {

enum class State { Ok, Warning, Failed };

/// Result of a check: what it found, and what to do about it (empty when the state is Ok).
struct Finding {
  State state;
  std::string reason;
  std::string remedy;
};

inline Finding ok(std::string reason) { return {State::Ok, std::move(reason), ""}; }
inline Finding warning(std::string reason, std::string remedy) {
  return {State::Warning, std::move(reason), std::move(remedy)};
}
inline Finding failed(std::string reason, std::string remedy) {
  return {State::Failed, std::move(reason), std::move(remedy)};
}
/// A prerequisite check failed, and has its own remedy.
inline Finding skipped(const std::string& why) {
  return {State::Warning, "skipped: " + why, "fix the failed check above"};
}

/// What is checked, and the results that later checks need.
struct Subject {
  std::string configurationUrl;
  std::string appName;

  std::optional<WebAddress> configuration;  // empty when the URL is unusable
  std::shared_ptr<ZtPortalData> document;   // has read the configuration and asked for the version
  bool isInTestMode = false;
  std::optional<WebAddress> server;  // where reports go
  std::string storeFolder;           // empty when there is none
};

Finding checkConfigurationUrl(Subject& subject);
Finding checkNameLookup(Subject& subject);
Finding checkProxy(Subject& subject);
/// Creates the document, which reads the configuration and asks for the version.
Finding checkConfiguration(Subject& subject);
Finding checkReportUrl(Subject& subject);
Finding checkReportNameLookup(Subject& subject);
Finding checkReportProxy(Subject& subject);
Finding checkVersion(Subject& subject);

/// Creates the folder, and writes a file there that it removes again.
Finding checkStoreFolder(Subject& subject);
Finding checkStoreMode(Subject& subject);
Finding checkFreeSpace(Subject& subject);
Finding checkSavedReports(Subject& subject);

Finding checkSessionBus(Subject& subject);
Finding checkCompanion(Subject& subject);
Finding checkTestMode(Subject& subject);
Finding checkHelperPrograms(Subject& subject);

}  // namespace zt::tools
