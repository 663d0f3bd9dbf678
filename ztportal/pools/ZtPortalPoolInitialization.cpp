#include "ztportal/pools/ZtPortalPoolInitialization.h"

#include "ztportal/pools/WritePool.h"

std::shared_ptr<ZtPortalPoolInitialization> ZtPortalPoolInitialization::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolInitialization>(Creation{}, timeStamp);
}

ZtPortalPoolInitialization::ZtPortalPoolInitialization(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, "INITIALIZATION", timeStamp), ZtPortalRunResult(timeStamp) {}

ZtPortalPoolInitialization::~ZtPortalPoolInitialization() = default;

void ZtPortalPoolInitialization::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap, [this](zt::PoolWriter& pool) {
    addStartTimeTo(pool);
    addEndTimeTo(pool);
    addResultTo(pool);
    addSuccessTo(pool);
  });
}
