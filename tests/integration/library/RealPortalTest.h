// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

inline constexpr const char* kApplicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";

/// The host "Setup" 2.1 on the real platform, with a temporary data folder, no proxy and no session
/// bus.
class RealPortalTest : public ::testing::Test {
 protected:
  RealPortalTest() {
    ZtHost::setBundleInfo({{"CFBundleName", "Setup"}, {"CFBundleShortVersionString", "2.1"}});
    for (const char* name : {"http_proxy", "https_proxy", "all_proxy", "no_proxy", "HTTPS_PROXY",
                             "ALL_PROXY", "NO_PROXY"}) {
      _environment.emplace_back(name, nullptr);
    }
    _environment.emplace_back("XDG_DATA_HOME", data.path().c_str());
    _environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  }

  static std::shared_ptr<ZtPortalData> makeDocument(const ZtString& configurationUrl) {
    return ZtPortalData::initWithValues(configurationUrl, false, "Kelvane", kApplicationId,
                                        "2.1.77");
  }

  /// A document with a pool.
  static std::shared_ptr<ZtPortalData> makeReport(const ZtString& configurationUrl) {
    auto document = makeDocument(configurationUrl);
    document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "gr\xc3\xbc\xc3\x9f");
    return document;
  }

  std::string store() const { return data.path("Kelvane/Setup/reports"); }
  std::string fileOf(const ZtPortalData& document) const {
    return store() + "/" + std::string(document.reportId().view()) + ".ztr";
  }
  /// The names in the store, in the order in which the system lists them.
  std::vector<std::string> stored() const {
    return LinuxFiles().list(store()).value_or(std::vector<std::string>());
  }
  /// The bytes of a file; nullopt if there is none.
  static std::optional<std::string> content(const std::string& path) {
    return LinuxFiles().read(path, kReportFileLimit);
  }

  const TemporaryFolder data;

 private:
  std::list<ScopedEnvironment> _environment;
};

}  // namespace zt::test
