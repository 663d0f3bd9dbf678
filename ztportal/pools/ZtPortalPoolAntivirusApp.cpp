#include "ztportal/pools/ZtPortalPoolAntivirusApp.h"

#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolAntivirusApp> ZtPortalPoolAntivirusApp::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolAntivirusApp>(Creation{}, name, version);
}

ZtPortalPoolAntivirusApp::ZtPortalPoolAntivirusApp(Creation /*creation*/, ZtString name,
                                                   ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolAntivirusApp::~ZtPortalPoolAntivirusApp() = default;

void ZtPortalPoolAntivirusApp::addFieldsTo(zt::PoolWriter& record) const {
  record.string("ANTIVIRUSAPP_NAME", _appName);
  record.string("ANTIVIRUSAPP_VERSION", _appVersion);
  record.string("ANTIVIRUSAPP_COMPANY", _appCompany);
  record.boolean("IS_ENABLED", _isEnabled);
  record.boolean("IS_UPTODATE", _isUpToDate);
}
