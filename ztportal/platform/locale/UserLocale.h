// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The user's current locale, and the system's data about languages and countries. Nothing is
/// cached.
class UserLocale {
 public:
  virtual ~UserLocale() = default;

  /// ISO 639 code of the locale's language ("de"); missing for a locale without one.
  virtual ZtString languageCode() = 0;
  /// ISO 3166 code of the locale's country ("DE"); missing for a locale without one.
  virtual ZtString countryCode() = 0;
  /// Name of a country in the locale's own language ("Deutschland"); missing for a missing code.
  virtual ZtString countryName(const ZtString& countryCode) = 0;

  /// Canonical language identifier (BCP 47) of a localization's name: "de_DE" gives "de-DE",
  /// "English" gives "en". Missing if it names no language.
  virtual ZtString canonicalLanguageIdentifier(const ZtString& localization) = 0;
  /// Whether `identifier` is one of the ISO 639 language codes, letter for letter.
  virtual bool isIsoLanguageCode(const ZtString& identifier) = 0;
};

/// The languages of the host application.
class Localizations {
 public:
  virtual ~Localizations() = default;

  /// Names of the main bundle's localizations that suit the user, best match first; empty for a
  /// host outside any bundle or without localizations.
  virtual std::vector<ZtString> preferredLocalizations() = 0;
};

/// The UTF-8 string `text` in lower case (Unicode default case conversion, independent of locales).
std::string lowerCase(std::string_view text);

}  // namespace zt
