#pragma once

#include <memory>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

namespace zt {
class PoolWriter;
}

/// A web browser of the inventory of the computer.
///
///     auto browser = computer->addBrowser("Firefox ESR", "128.3.0", 1);
///
/// `isStandard` marks the one that the user opens web addresses with; a new record is not marked.
/// Single reads and writes of texts are atomic.
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
  friend class zt::PoolWriter;
  void addFieldsTo(zt::PoolWriter& record) const;

  ZtAtomic<ZtString> _appName;
  ZtAtomic<ZtString> _appVersion;
  ZtBOOL _isStandard = 0;
};
