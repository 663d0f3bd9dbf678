// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// Keys of `ZtSystemInfos::getSystemInfos`; the value of each is its own name.
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER;
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK;
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID;

/// Facts about the machine and its user. Every call asks the system again; no call fails.
///
///     auto infos = ZtSystemInfos::getSystemInfos();
///     infos.at("ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER");     // "12.11"
///
/// Any thread may call any operation.
class ZT_EXPORT ZtSystemInfos {
 public:
  ZtSystemInfos() = delete;

  /// Always has all three keys: "major.minor" of the operating system, its bug-fix number (the
  /// service pack in reports) and the platform UUID, which is empty for a machine without one.
  static std::map<std::string, ZtString> getSystemInfos();

  /// The UUID of the machine, unchanged from the platform; missing for a machine without one.
  static ZtString platformUUID();

  /// Version of the operating system; 10, 0, 0 if it is unknown. Null pointers are skipped.
  static void getSystemVersionMajor(std::int32_t* major, std::int32_t* minor, std::int32_t* bugFix);

  /// Language and country of the user. Null pointers are skipped.
  ///
  /// `language` is set to the host's best localization if that is an ISO 639 code. Otherwise the
  /// caller's value stays, unless it is missing or empty: then it is set to the locale's language,
  /// or to "en" if the locale has none. `countryCode` is set to the locale's ISO 3166 code.
  /// `coutryName` is set to the country's name in the locale's language, but only if `countryCode`
  /// is not null. Both may be missing.
  static void getPreferredLanguage(ZtString* language, ZtString* countryCode, ZtString* coutryName);
};
