// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

namespace zt {
template <class Object>
struct Fields;
}

/// An antivirus application in the inventory of the computer.
///
///     auto app = computer->addAntivirusApp("ClamAV", "1.0.7");
///     app->setAppCompany("Example");
///     app->setIsUpToDate(1);
///
/// A new record has an empty company and is neither enabled nor up to date. Single reads and writes
/// of strings are atomic.
class ZT_EXPORT ZtPortalPoolAntivirusApp {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolAntivirusApp> initWithNameAndVersion(const ZtString& name,
                                                                          const ZtString& version);

  ZtPortalPoolAntivirusApp(Creation creation, ZtString name, ZtString version);
  ZtPortalPoolAntivirusApp(const ZtPortalPoolAntivirusApp&) = delete;
  ZtPortalPoolAntivirusApp& operator=(const ZtPortalPoolAntivirusApp&) = delete;
  ~ZtPortalPoolAntivirusApp();

  ZtString appName() const { return _appName.load(); }
  void setAppName(ZtString value) { _appName.store(std::move(value)); }
  ZtString appVersion() const { return _appVersion.load(); }
  void setAppVersion(ZtString value) { _appVersion.store(std::move(value)); }
  ZtString appCompany() const { return _appCompany.load(); }
  void setAppCompany(ZtString value) { _appCompany.store(std::move(value)); }
  ZtBOOL isEnabled() const { return _isEnabled; }
  void setIsEnabled(ZtBOOL value) { _isEnabled = value; }
  ZtBOOL isUpToDate() const { return _isUpToDate; }
  void setIsUpToDate(ZtBOOL value) { _isUpToDate = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolAntivirusApp>;

  ZtAtomic<ZtString> _appName;
  ZtAtomic<ZtString> _appVersion;
  ZtAtomic<ZtString> _appCompany{ZtString::constant<"">()};
  ZtBOOL _isEnabled = 0;
  ZtBOOL _isUpToDate = 0;
};
