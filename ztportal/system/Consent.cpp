// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/Consent.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/system/HostFolder.h"

namespace zt {

namespace {

constexpr std::string_view kFile = "consent";

constexpr std::array<std::pair<ZtConsent, std::string_view>, 2> kContents{
    {{ZtConsent::Given, "given\n"}, {ZtConsent::Revoked, "revoked\n"}}};

/// A revocation that could not be kept.
constinit std::atomic<bool> isRevokedHere = false;

bool write(ZtConsent consent) {
  const std::optional<std::string> folder = hostFolder();
  if (!folder) return false;
  Files& files = Platform::current().files();
  const std::string path = joinedPath(*folder, kFile);
  for (const auto& [kind, content] : kContents) {
    if (kind == consent) return files.replacePrivate(path, content);
  }
  return !files.exists(path) || files.remove(path);
}

}  // namespace

ZtConsent readConsent() {
  if (isRevokedHere) return ZtConsent::Revoked;
  const std::optional<std::string> folder = hostFolderPath();
  if (!folder) return ZtConsent::Unset;
  Files& files = Platform::current().files();
  const std::string path = joinedPath(*folder, kFile);
  if (!files.exists(path)) return ZtConsent::Unset;
  constexpr std::size_t kLimit = 64;
  const std::optional<std::string> found = files.read(path, kLimit);
  for (const auto& [kind, content] : kContents) {
    if (found == content) return kind;
  }
  // Another process may have removed it meanwhile.
  if (!found && !files.exists(path)) return ZtConsent::Unset;
  log(ZtLogLevel::Error, "consent", path, " cannot be understood, so the consent is revoked");
  return ZtConsent::Revoked;
}

bool keepConsent(ZtConsent consent) {
  const bool isKept = write(consent);
  if (isKept) {
    isRevokedHere = false;
  } else {
    if (consent == ZtConsent::Revoked) isRevokedHere = true;
    log(ZtLogLevel::Error, "consent", "the consent cannot be kept in the user's folder");
  }
  return isKept;
}

}  // namespace zt
