// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "ztportal/platform/locale/UserLocale.h"

namespace zt {

/// The locale that the environment names and the languages and countries of the Unicode data. The
/// language, and the names of countries, are of the locale for messages (the first of `LC_ALL`,
/// `LC_MESSAGES` and `LANG` that is set and not empty), the country is of the locale for formats
/// (`LC_TIME` in place of `LC_MESSAGES`). "C" and "POSIX" have neither language nor country; the
/// names of countries are then English.
class IcuUserLocale final : public UserLocale {
 public:
  ZtString languageCode() override;
  ZtString countryCode() override;
  ZtString countryName(const ZtString& countryCode) override;

  ZtString canonicalLanguageIdentifier(const ZtString& localization) override;
  bool isIsoLanguageCode(const ZtString& identifier) override;
};

/// The localizations of the bundle above the running executable, matched with the languages of the
/// environment. Both are read at each call.
class BundleLocalizations final : public Localizations {
 public:
  std::vector<ZtString> preferredLocalizations() override;
};

}  // namespace zt
