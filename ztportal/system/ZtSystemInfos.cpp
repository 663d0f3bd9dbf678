// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/ZtSystemInfos.h"

#include <optional>
#include <vector>

#include "ztportal/platform/Platform.h"

constinit const ZtString ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER =
    ZtString::constant<"ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER">();
constinit const ZtString ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK =
    ZtString::constant<"ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK">();
constinit const ZtString ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID =
    ZtString::constant<"ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID">();

namespace {

struct Version {
  std::int32_t major;
  std::int32_t minor;
  std::int32_t bugFix;
};

constexpr Version kUnknownVersion{10, 0, 0};

/// From this version on there are three separate selectors; earlier ones are four packed digits.
constexpr std::int32_t kFirstVersionWithSelectors = 0x1040;

Version unpacked(std::int32_t packed) {
  const auto digits = static_cast<std::uint32_t>(packed);
  const auto digit = [digits](unsigned shift) {
    return static_cast<std::int32_t>(digits >> shift & 0xFU);
  };
  return {digit(12) * 10 + digit(8), digit(4), digit(0)};
}

Version systemVersion() {
  zt::Gestalt& gestalt = zt::Platform::current().gestalt();
  const std::optional<std::int32_t> packed = gestalt.ask(zt::kGestaltSystemVersion);
  if (!packed) return kUnknownVersion;
  if (*packed < kFirstVersionWithSelectors) return unpacked(*packed);

  const auto major = gestalt.ask(zt::kGestaltSystemVersionMajor);
  const auto minor = major ? gestalt.ask(zt::kGestaltSystemVersionMinor) : std::nullopt;
  const auto bugFix = minor ? gestalt.ask(zt::kGestaltSystemVersionBugFix) : std::nullopt;
  return bugFix ? Version{*major, *minor, *bugFix} : kUnknownVersion;
}

void preferredLanguage(ZtString& language) {
  zt::Platform& platform = zt::Platform::current();
  zt::UserLocale& locale = platform.userLocale();
  const std::vector<ZtString> localizations = platform.localizations().preferredLocalizations();
  if (!localizations.empty()) {
    const ZtString identifier = locale.canonicalLanguageIdentifier(localizations.front());
    if (locale.isIsoLanguageCode(identifier)) language = identifier;
  }
  if (language.empty()) language = locale.languageCode();
  if (language.empty()) language = "en";
}

}  // namespace

void ZtSystemInfos::getSystemVersionMajor(std::int32_t* major, std::int32_t* minor,
                                          std::int32_t* bugFix) {
  const Version version = systemVersion();
  if (major != nullptr) *major = version.major;
  if (minor != nullptr) *minor = version.minor;
  if (bugFix != nullptr) *bugFix = version.bugFix;
}

std::map<std::string, ZtString> ZtSystemInfos::getSystemInfos() {
  const Version version = systemVersion();
  const ZtString uuid = platformUUID();
  return {
      {std::string(ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER.view()),
       std::to_string(version.major) + "." + std::to_string(version.minor)},
      {std::string(ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK.view()), std::to_string(version.bugFix)},
      {std::string(ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID.view()), uuid.empty() ? ZtString("") : uuid},
  };
}

ZtString ZtSystemInfos::platformUUID() {
  return zt::Platform::current().machineIdentity().platformUUID();
}

void ZtSystemInfos::getPreferredLanguage(ZtString* language, ZtString* countryCode,
                                         ZtString* coutryName) {
  if (language != nullptr) preferredLanguage(*language);
  if (countryCode == nullptr) return;
  zt::UserLocale& locale = zt::Platform::current().userLocale();
  *countryCode = locale.countryCode();
  if (coutryName != nullptr) *coutryName = locale.countryName(*countryCode);
}
