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

/// A web browser in the inventory of the computer.
///
///     auto browser = computer->addBrowser("Firefox ESR", "128.3.0", 1);
///
/// `isStandard` marks the user's default browser; a new record is not marked.
/// Single reads and writes of strings are atomic.
class ZT_EXPORT ZtPortalPoolBrowser {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolBrowser> initWithNameAndVersion(const ZtString& name,
                                                                     const ZtString& version);

  ZtPortalPoolBrowser(Creation creation, ZtString name, ZtString version);
  ZtPortalPoolBrowser(const ZtPortalPoolBrowser&) = delete;
  ZtPortalPoolBrowser& operator=(const ZtPortalPoolBrowser&) = delete;
  ~ZtPortalPoolBrowser();

  ZtString appName() const { return _appName.load(); }
  void setAppName(ZtString value) { _appName.store(std::move(value)); }
  ZtString appVersion() const { return _appVersion.load(); }
  void setAppVersion(ZtString value) { _appVersion.store(std::move(value)); }
  ZtBOOL isStandard() const { return _isStandard; }
  void setIsStandard(ZtBOOL value) { _isStandard = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolBrowser>;

  ZtAtomic<ZtString> _appName;
  ZtAtomic<ZtString> _appVersion;
  ZtBOOL _isStandard = 0;
};
