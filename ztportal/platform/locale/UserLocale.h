#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// The user's current locale and what the system knows of languages and countries. Every call
/// asks afresh.
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
  /// "English" gives "en". Missing for a text that names no language.
  virtual ZtString canonicalLanguageIdentifier(const ZtString& localization) = 0;
  /// Whether `identifier` is one of the ISO 639 language codes, letter for letter.
  virtual bool isIsoLanguageCode(const ZtString& identifier) = 0;
};

}  // namespace zt
