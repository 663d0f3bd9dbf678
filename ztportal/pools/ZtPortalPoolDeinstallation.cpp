#include "ztportal/pools/ZtPortalPoolDeinstallation.h"

#include "ztportal/pools/WritePool.h"

std::shared_ptr<ZtPortalPoolDeinstallation> ZtPortalPoolDeinstallation::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolDeinstallation>(Creation{}, timeStamp);
}

ZtPortalPoolDeinstallation::ZtPortalPoolDeinstallation(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, "DEINSTALLATION", timeStamp), ZtPortalRunResult(timeStamp) {}

ZtPortalPoolDeinstallation::~ZtPortalPoolDeinstallation() = default;

void ZtPortalPoolDeinstallation::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap, [this](zt::PoolWriter& pool) {
    addStartTimeTo(pool);
    addEndTimeTo(pool);
    addResultTo(pool);
    addSuccessTo(pool);
  });
}
