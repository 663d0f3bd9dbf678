#pragma once

#include "ztportal/platform/IcuLocale.h"
#include "ztportal/platform/LanguageTag.h"
#include "ztportal/platform/LowerCase.h"
#include "ztportal/platform/TextEncoding.h"
#include "ztportal/platform/TimestampWriter.h"
#include "ztportal/platform/UserLocale.h"

namespace zt {

/// What needs ICU.
struct IcuModule {
  static constexpr const char* kName = "icu";

  decltype(&currentTimestampWriter) timestampWriter;
  UserLocale& (*userLocale)();
  decltype(&icuLocaleName) localeName;
  decltype(&canonicalLanguageTag) canonicalTag;
  decltype(&languageParts) parts;
  decltype(&withLikelySubtags) withLikely;
  decltype(&withoutLikelySubtags) withoutLikely;
  decltype(&lowerCase) lower;
  decltype(&utf8From) utf8;
};

}  // namespace zt
