// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalRunResult.h"

/// The removal of a product. Pool type "DEINSTALLATION".
///
///     auto pool = document->addPoolDeinstallation(ZtDate::now());
///     pool->setSuccessfull(0);
///     pool->setEndTime(ZtDate::now());
///
/// A new pool starts and ends at its own timestamp, is successful and has empty strings.
class ZT_EXPORT ZtPortalPoolDeinstallation final : public ZtPortalPool, public ZtPortalRunResult {
 public:
  static std::shared_ptr<ZtPortalPoolDeinstallation> initWithValues(const ZtDate& timeStamp);

  ZtPortalPoolDeinstallation(Creation creation, const ZtDate& timeStamp);
  ~ZtPortalPoolDeinstallation() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;
};
