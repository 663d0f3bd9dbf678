#include "ztportal/pools/ZtPortalPoolEMailClient.h"

#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPoolEMailClient> ZtPortalPoolEMailClient::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolEMailClient>(Creation{}, name, version);
}

ZtPortalPoolEMailClient::ZtPortalPoolEMailClient(Creation /*creation*/, ZtString name,
                                                 ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolEMailClient::~ZtPortalPoolEMailClient() = default;

void ZtPortalPoolEMailClient::addFieldsTo(zt::PoolWriter& record) const {
  record.string("EMAILCLIENT_NAME", _appName);
  record.string("EMAILCLIENT_VERSION", _appVersion);
  record.boolean("IS_STANDARD", _isStandard);
}
