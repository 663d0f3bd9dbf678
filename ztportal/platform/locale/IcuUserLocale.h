#pragma once

#include "ztportal/platform/locale/UserLocale.h"

namespace zt {

/// The locale that the environment names (the first of `LC_ALL`, `LC_TIME` and `LANG` that is set
/// and not empty) and the languages and countries of the Unicode data. "C" and "POSIX" have neither
/// language nor country; they name countries in English.
class IcuUserLocale final : public UserLocale {
 public:
  ZtString languageCode() override;
  ZtString countryCode() override;
  ZtString countryName(const ZtString& countryCode) override;

  ZtString canonicalLanguageIdentifier(const ZtString& localization) override;
  bool isIsoLanguageCode(const ZtString& identifier) override;
};

}  // namespace zt
