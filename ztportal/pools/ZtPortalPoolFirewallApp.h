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

/// A firewall application in the inventory of the computer.
///
///     auto app = computer->addFirewallApp("firewalld", "1.3.3");
///     app->setIsEnabled(1);
///
/// A new record has an empty company and is not enabled. Single reads and writes of strings are
/// atomic.
class ZT_EXPORT ZtPortalPoolFirewallApp {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolFirewallApp> initWithNameAndVersion(const ZtString& name,
                                                                         const ZtString& version);

  ZtPortalPoolFirewallApp(Creation creation, ZtString name, ZtString version);
  ZtPortalPoolFirewallApp(const ZtPortalPoolFirewallApp&) = delete;
  ZtPortalPoolFirewallApp& operator=(const ZtPortalPoolFirewallApp&) = delete;
  ~ZtPortalPoolFirewallApp();

  ZtString appName() const { return _appName.load(); }
  void setAppName(ZtString value) { _appName.store(std::move(value)); }
  ZtString appVersion() const { return _appVersion.load(); }
  void setAppVersion(ZtString value) { _appVersion.store(std::move(value)); }
  ZtString appCompany() const { return _appCompany.load(); }
  void setAppCompany(ZtString value) { _appCompany.store(std::move(value)); }
  ZtBOOL isEnabled() const { return _isEnabled; }
  void setIsEnabled(ZtBOOL value) { _isEnabled = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolFirewallApp>;

  ZtAtomic<ZtString> _appName;
  ZtAtomic<ZtString> _appVersion;
  ZtAtomic<ZtString> _appCompany{ZtString::constant<"">()};
  ZtBOOL _isEnabled = 0;
};
