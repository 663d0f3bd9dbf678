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

/// An e-mail client in the inventory of the computer.
///
///     auto client = computer->addEMailClient("Thunderbird", "128.3.0", 1);
///
/// `isStandard` marks the user's default client; a new record is not marked.
/// Single reads and writes of strings are atomic.
class ZT_EXPORT ZtPortalPoolEMailClient {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolEMailClient> initWithNameAndVersion(const ZtString& name,
                                                                         const ZtString& version);

  ZtPortalPoolEMailClient(Creation creation, ZtString name, ZtString version);
  ZtPortalPoolEMailClient(const ZtPortalPoolEMailClient&) = delete;
  ZtPortalPoolEMailClient& operator=(const ZtPortalPoolEMailClient&) = delete;
  ~ZtPortalPoolEMailClient();

  ZtString appName() const { return _appName.load(); }
  void setAppName(ZtString value) { _appName.store(std::move(value)); }
  ZtString appVersion() const { return _appVersion.load(); }
  void setAppVersion(ZtString value) { _appVersion.store(std::move(value)); }
  ZtBOOL isStandard() const { return _isStandard; }
  void setIsStandard(ZtBOOL value) { _isStandard = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolEMailClient>;

  ZtAtomic<ZtString> _appName;
  ZtAtomic<ZtString> _appVersion;
  ZtBOOL _isStandard = 0;
};
