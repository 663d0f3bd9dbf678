#include "ztportal/system/ZtHost.h"

#include <memory>
#include <optional>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/ZtAtomic.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/process/ProgramPath.h"
#include "ztportal/system/Consent.h"
#include "ztportal/system/HostRules.h"

namespace {

using Info = std::map<std::string, ZtString>;

/// The information that the host passed; null before that. Never destroyed, since hosts also report
/// from static destructors.
ZtAtomic<std::shared_ptr<const Info>>& givenInfo() {
  static auto* const info = new ZtAtomic<std::shared_ptr<const Info>>();
  return *info;
}

/// Null before the host has set them; never destroyed either.
ZtAtomic<std::shared_ptr<const ZtTransportOptions>>& givenTransportOptions() {
  static auto* const options = new ZtAtomic<std::shared_ptr<const ZtTransportOptions>>();
  return *options;
}

const Info& mainBundleInfo() {
  static const auto* const info = [] {
    const std::optional<zt::Bundle> bundle = zt::Bundle::above(zt::executablePath());
    return new Info(bundle ? bundle->info() : Info());
  }();
  return *info;
}

ZtString executableName() {
  const std::string path = zt::executablePath();
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

void ZtHost::setBundleInfo(std::map<std::string, ZtString> info) {
  givenInfo().store(std::make_shared<const Info>(std::move(info)));
}

ZtString ZtHost::bundleInfo(const std::string& key) {
  const std::shared_ptr<const Info> given = givenInfo().load();
  const Info& info = given != nullptr ? *given : mainBundleInfo();
  if (const auto found = info.find(key); found != info.end()) return found->second;
  return key == "CFBundleName" ? executableName() : ZtString();
}

std::string ZtHost::setTransportOptions(ZtTransportOptions options) {
  std::string problem = options.problem();
  if (problem.empty()) {
    givenTransportOptions().store(std::make_shared<const ZtTransportOptions>(std::move(options)));
  }
  return problem;
}

ZtTransportOptions ZtHost::transportOptions() {
  const std::shared_ptr<const ZtTransportOptions> given = givenTransportOptions().load();
  return given != nullptr ? *given : ZtTransportOptions();
}

void ZtHost::closeConnections() {
  zt::Platform& platform = zt::Platform::current();
  platform.http().closeConnections();
  platform.broadcast().closeConnections();
}

std::vector<std::string> ZtHost::missingPrograms() { return zt::missingLibexecPrograms(); }

void ZtHost::setValueEscaping(bool isOn) { zt::rules::isEscaping = isOn; }

bool ZtHost::setConsent(ZtConsent consent) { return zt::keepConsent(consent); }

ZtConsent ZtHost::consent() { return zt::readConsent(); }

void ZtHost::setBroadcastEnabled(bool isEnabled) { zt::rules::isBroadcasting = isEnabled; }

void ZtHost::setValueFilter(ZtValueFilter filter) { zt::setValueFilter(std::move(filter)); }

void ZtHost::setRequestHook(ZtRequestHook hook) { zt::setRequestHook(std::move(hook)); }

void ZtHost::setLogHandler(ZtLogHandler handler) { zt::setLogHandler(std::move(handler)); }
