// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/system/HostFolder.h"
#include "ztportal/system/ZtHost.h"

namespace zt {

namespace {

constexpr std::string_view kFile = "consent";

/// Of the file, by `ZtConsent`. For `Unset` there is none.
constexpr std::array<std::string_view, 3> kContents{"", "given\n", "revoked\n"};

/// A revocation that could not be kept.
constinit std::atomic<bool> isRevokedHere = false;

bool write(ZtConsent consent) {
  const std::optional<std::string> folder = hostFolder();
  if (!folder) return false;
  Files& files = Platform::current().files();
  const std::string path = joinedPath(*folder, kFile);
  if (consent == ZtConsent::Unset) return !files.exists(path) || files.remove(path);
  return files.replacePrivate(path, kContents.at(static_cast<std::size_t>(consent)));
}

}  // namespace

}  // namespace zt

ZtConsent ZtHost::consent() {
  if (zt::isRevokedHere) return ZtConsent::Revoked;
  const std::optional<std::string> folder = zt::hostFolderPath();
  if (!folder) return ZtConsent::Unset;
  zt::Files& files = zt::Platform::current().files();
  const std::string path = zt::joinedPath(*folder, zt::kFile);
  if (!files.exists(path)) return ZtConsent::Unset;
  constexpr std::size_t kLimit = 64;
  const std::optional<std::string> found = files.read(path, kLimit);
  for (const ZtConsent kind : {ZtConsent::Given, ZtConsent::Revoked}) {
    if (found == zt::kContents.at(static_cast<std::size_t>(kind))) return kind;
  }
  // Another process may have removed it meanwhile.
  if (!found && !files.exists(path)) return ZtConsent::Unset;
  zt::log(ZtLogLevel::Error, "consent", path, " cannot be understood, so the consent is revoked");
  return ZtConsent::Revoked;
}

bool ZtHost::setConsent(ZtConsent consent) {
  const bool isKept = zt::write(consent);
  if (isKept || consent == ZtConsent::Revoked) zt::isRevokedHere = !isKept;
  if (!isKept) {
    zt::log(ZtLogLevel::Error, "consent", "the consent cannot be kept in the user's folder");
  }
  return isKept;
}
