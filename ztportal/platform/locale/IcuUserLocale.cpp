// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/locale/IcuUserLocale.h"

#include <unicode/locid.h>
#include <unicode/stringpiece.h>
#include <unicode/unistr.h>

#include <optional>
#include <string>

#include "ztportal/platform/locale/Languages.h"
#include "ztportal/platform/locale/PosixLocale.h"
#include "ztportal/platform/plist/Bundle.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt {

namespace {

constexpr const char* kMessages = "LC_MESSAGES";
constexpr const char* kFormats = "LC_TIME";

icu::Locale userLocale(const char* category) {
  return {icuLocaleName(userLocaleName(category)).c_str()};
}

ZtString missingIfEmpty(std::string_view text) { return text.empty() ? ZtString() : text; }

}  // namespace

ZtString IcuUserLocale::languageCode() {
  if (isPosixLocale(userLocaleName(kMessages))) return nullptr;
  return missingIfEmpty(userLocale(kMessages).getLanguage());
}

ZtString IcuUserLocale::countryCode() {
  if (isPosixLocale(userLocaleName(kFormats))) return nullptr;
  // Three digits denote a part of the world, not a country.
  const icu::Locale locale = userLocale(kFormats);
  const std::string_view region = locale.getCountry();
  return region.size() == 2 ? ZtString(region) : ZtString();
}

ZtString IcuUserLocale::countryName(const ZtString& countryCode) {
  if (countryCode.isNull()) return nullptr;
  const icu::Locale country("", std::string(countryCode.view()).c_str());
  icu::UnicodeString name;
  country.getDisplayCountry(userLocale(kMessages), name);
  std::string text;
  return missingIfEmpty(name.toUTF8String(text));
}

ZtString IcuUserLocale::canonicalLanguageIdentifier(const ZtString& localization) {
  return missingIfEmpty(canonicalLanguageTag(localization.view()));
}

bool IcuUserLocale::isIsoLanguageCode(const ZtString& identifier) {
  for (const char* const* code = icu::Locale::getISOLanguages(); *code != nullptr; ++code) {
    if (identifier == *code) return true;
  }
  return false;
}

std::vector<ZtString> BundleLocalizations::preferredLocalizations() {
  const std::optional<Bundle> bundle = Bundle::above(executablePath());
  if (!bundle) return {};
  return matchLocalizations(bundle->localizations(), preferredLanguages(),
                            bundle->info("CFBundleDevelopmentRegion"));
}

std::string lowerCase(std::string_view text) {
  icu::UnicodeString unicode = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  std::string lower;
  unicode.toLower(icu::Locale::getRoot()).toUTF8String(lower);
  return lower;
}

}  // namespace zt
