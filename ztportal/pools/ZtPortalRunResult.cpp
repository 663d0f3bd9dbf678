// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalRunResult.h"

#include "ztportal/pools/PoolWriter.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"

// The two pools that contain the result of a run and nothing else.

std::shared_ptr<ZtPortalPoolDeinstallation> ZtPortalPoolDeinstallation::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolDeinstallation>(Creation{}, timeStamp);
}

ZtPortalPoolDeinstallation::ZtPortalPoolDeinstallation(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolDeinstallation>::kType, timeStamp),
      ZtPortalRunResult(timeStamp) {}

ZtPortalPoolDeinstallation::~ZtPortalPoolDeinstallation() = default;

void ZtPortalPoolDeinstallation::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
}

std::shared_ptr<ZtPortalPoolInitialization> ZtPortalPoolInitialization::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolInitialization>(Creation{}, timeStamp);
}

ZtPortalPoolInitialization::ZtPortalPoolInitialization(Creation creation, const ZtDate& timeStamp)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolInitialization>::kType, timeStamp),
      ZtPortalRunResult(timeStamp) {}

ZtPortalPoolInitialization::~ZtPortalPoolInitialization() = default;

void ZtPortalPoolInitialization::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
}
