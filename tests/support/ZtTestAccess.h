// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/portal/ZtPortalData.h"

/// Gives tests access to private operations of the library's classes.
struct ZtTestAccess {
  static std::shared_ptr<ZtPortalPool> pool(const ZtPortalData& document, std::int32_t index) {
    return document._pool(index);
  }
  static ZtString localSupportFolder() { return ZtPortalData::_localSupportFolder(); }
  static ZtString supportFolder(std::uint32_t domain, const ZtString& relativePath) {
    return ZtPortalData::_supportFolder(domain, relativePath);
  }
  static ZtString httpRequest(ZtPortalData& document, const ZtString& url,
                              const ZtString& command) {
    return document._httpRequest(url, command);
  }
  static void initHttp(ZtPortalData& document, const ZtString& url, bool cacheConfiguration) {
    document._initHttp(url, cacheConfiguration);
  }
  static bool getConfiguration(ZtPortalData& document, const ZtString& url,
                               bool cacheConfiguration) {
    return document._getConfiguration(url, cacheConfiguration);
  }
  static ZtString getReportUrl(const ZtPortalData& document) { return document._getReportUrl(); }
  static ZtString getServerVersion(ZtPortalData& document) { return document._getServerVersion(); }
  static bool mutexEnabled(const ZtPortalData& document) { return document._mutexEnabled(); }
  static ZtString getReportFile(const ZtPortalData& document) { return document._getReportFile(); }
  static ZtString getReportFolder() { return ZtPortalData::_getReportFolder(); }
  static bool isCurrentUserAnAdmin(const ZtPortalPoolComputerSystem& pool) {
    return pool._isCurrentUserAnAdmin();
  }
  static ZtString getDefaultBrowserApp(const ZtPortalPoolComputerSystem& pool) {
    return pool._getDefaultBrowserApp();
  }
  static ZtString getDefaultEMailClientApp(const ZtPortalPoolComputerSystem& pool) {
    return pool._getDefaultEMailClientApp();
  }
};
