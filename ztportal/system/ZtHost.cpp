// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/ZtHost.h"

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

#include "ztportal/base/HostSetting.h"
#include "ztportal/base/Log.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/process/ProgramPath.h"
#include "ztportal/system/HostRules.h"

namespace {

using Info = std::map<std::string, ZtString>;

const Info& mainBundleInfo() {
  // Not a static object: a handler that is told about the bundle may ask for this meanwhile.
  static constinit std::atomic<const Info*> known{nullptr};
  if (const Info* info = known.load()) return *info;
  const std::optional<zt::Bundle> bundle = zt::Bundle::above(zt::executablePath());
  auto info = std::make_unique<const Info>(bundle ? bundle->info() : Info());
  const Info* first = nullptr;
  return known.compare_exchange_strong(first, info.get()) ? *info.release() : *first;
}

ZtString executableName() {
  const std::string path = zt::executablePath();
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

void ZtHost::setBundleInfo(std::map<std::string, ZtString> info) {
  zt::hostSetting<Info>().store(std::make_shared<const Info>(std::move(info)));
}

ZtString ZtHost::bundleInfo(const std::string& key) {
  const std::shared_ptr<const Info> given = zt::hostSetting<Info>().load();
  const Info& info = given != nullptr ? *given : mainBundleInfo();
  if (const auto found = info.find(key); found != info.end()) return found->second;
  return key == "CFBundleName" ? executableName() : ZtString();
}

std::string ZtHost::setTransportOptions(ZtTransportOptions options) {
  std::string problem = options.problem();
  if (problem.empty()) {
    zt::hostSetting<ZtTransportOptions>().store(
        std::make_shared<const ZtTransportOptions>(std::move(options)));
  }
  return problem;
}

ZtTransportOptions ZtHost::transportOptions() {
  const auto given = zt::hostSetting<ZtTransportOptions>().load();
  return given != nullptr ? *given : ZtTransportOptions();
}

void ZtHost::closeConnections() {
  zt::Platform& platform = zt::Platform::current();
  platform.http().closeConnections();
  platform.broadcast().closeConnections();
}

std::vector<std::string> ZtHost::missingPrograms() { return zt::missingLibexecPrograms(); }

void ZtHost::setValueEscaping(bool isOn) { zt::rules::isEscaping = isOn; }

void ZtHost::setBroadcastEnabled(bool isEnabled) { zt::rules::isBroadcasting = isEnabled; }

void ZtHost::setValueFilter(ZtValueFilter filter) {
  zt::rules::isFiltering = zt::setHostFunction(std::move(filter));
}

void ZtHost::setRequestHook(ZtRequestHook hook) { zt::setHostFunction(std::move(hook)); }

void ZtHost::setLogHandler(ZtLogHandler handler) { zt::setLogHandler(std::move(handler)); }
