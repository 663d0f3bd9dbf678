#include "ztportal/pools/ZtPortalPoolFirewallApp.h"

#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolFirewallApp> ZtPortalPoolFirewallApp::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolFirewallApp>(Creation{}, name, version);
}

ZtPortalPoolFirewallApp::ZtPortalPoolFirewallApp(Creation /*creation*/, ZtString name,
                                                 ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolFirewallApp::~ZtPortalPoolFirewallApp() = default;

void ZtPortalPoolFirewallApp::addFieldsTo(zt::PoolWriter& record) const {
  record.string("FIREWALLAPP_NAME", _appName);
  record.string("FIREWALLAPP_VERSION", _appVersion);
  record.string("FIREWALLAPP_COMPANY", _appCompany);
  record.boolean("IS_ENABLED", _isEnabled);
}
