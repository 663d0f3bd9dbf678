// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "ztportal/platform/locale/UserLocale.h"

namespace zt::test {

class FakeLocalizations final : public Localizations {
 public:
  std::vector<ZtString> preferredLocalizations() override { return preferred; }

  std::vector<ZtString> preferred;
};

/// A German locale by default. Identifiers are canonical unless `canonical` has an entry.
class FakeUserLocale final : public UserLocale {
 public:
  ZtString languageCode() override { return language; }
  ZtString countryCode() override { return country; }
  ZtString countryName(const ZtString& countryCode) override {
    askedCountries.push_back(countryCode);
    return countryCode == country ? name : ZtString();
  }
  ZtString canonicalLanguageIdentifier(const ZtString& localization) override {
    const auto found = canonical.find(std::string(localization.view()));
    return found != canonical.end() ? found->second : localization;
  }
  bool isIsoLanguageCode(const ZtString& identifier) override {
    return std::find(isoCodes.begin(), isoCodes.end(), identifier) != isoCodes.end();
  }

  ZtString language = "de";
  ZtString country = "DE";
  ZtString name = "Deutschland";
  std::map<std::string, ZtString> canonical;
  std::vector<ZtString> isoCodes{"de", "en", "fr", "zh"};
  std::vector<ZtString> askedCountries;
};

}  // namespace zt::test
