// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalRunResult.h"

/// The first setup of a product. Pool type "INITIALIZATION".
///
///     auto pool = document->addPoolInitialization(ZtDate::now());
///     pool->setEndResultString("ready");
///     pool->setEndTime(ZtDate::now());
///
/// A new pool starts and ends at its own timestamp, is successful and has empty strings.
class ZT_EXPORT ZtPortalPoolInitialization final : public ZtPortalPool, public ZtPortalRunResult {
 public:
  static std::shared_ptr<ZtPortalPoolInitialization> initWithValues(const ZtDate& timeStamp);

  ZtPortalPoolInitialization(Creation creation, const ZtDate& timeStamp);
  ~ZtPortalPoolInitialization() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;
};
