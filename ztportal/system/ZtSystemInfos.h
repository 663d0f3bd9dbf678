#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// Keys of the dictionary of `ZtSystemInfos::getSystemInfos`; each one's text is its name.
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER;
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_OS_SERVICEPACK;
extern ZT_EXPORT const ZtString ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID;

/// Facts of the machine and its user. Every call asks the system afresh; none fails.
///
///     auto infos = ZtSystemInfos::getSystemInfos();
///     infos.at("ZtDIAG_SYSTEM_INFOS_OS_VERSION_NUMBER");     // "12.11"
///
/// Any thread may call any operation.
class ZT_EXPORT ZtSystemInfos {
 public:
  ZtSystemInfos() = delete;

  /// Three texts, always all of them: "major.minor" of the operating system, its bug-fix number
  /// (which reports call the service pack), and the platform UUID, empty for a machine without.
  static std::map<std::string, ZtString> getSystemInfos();

  /// The UUID of the machine as the platform gives it; missing for a machine without.
  static ZtString platformUUID();

  /// Version of the operating system; 10, 0, 0 where it cannot be told. A null pointer is skipped.
  static void getSystemVersionMajor(std::int32_t* major, std::int32_t* minor, std::int32_t* bugFix);

  /// What the user speaks and where. A null pointer is skipped.
  ///
  /// `language` gets the host's best localization if that is an ISO 639 code. Otherwise what the
  /// caller had put there stays, unless it is missing or empty: then it is the locale's language,
  /// and "en" without one. `countryCode` gets the locale's ISO 3166 code, `coutryName` its name in
  /// the locale's own language, but only if the code is asked for, too. Both may be missing.
  static void getPreferredLanguage(ZtString* language, ZtString* countryCode, ZtString* coutryName);
};
