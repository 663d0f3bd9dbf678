#include "ztportal/pools/ZtPortalPoolBrowser.h"

#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolBrowser> ZtPortalPoolBrowser::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolBrowser>(Creation{}, name, version);
}

ZtPortalPoolBrowser::ZtPortalPoolBrowser(Creation /*creation*/, ZtString name, ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolBrowser::~ZtPortalPoolBrowser() = default;

void ZtPortalPoolBrowser::addFieldsTo(zt::PoolWriter& record) const {
  record.string("BROWSER_NAME", _appName);
  record.string("BROWSER_VERSION", _appVersion);
  record.boolean("IS_STANDARD", _isStandard);
}
