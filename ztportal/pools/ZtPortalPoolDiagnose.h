// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolDiagnoseStep.h"

/// The steps of one run of a diagnose-and-repair tool. Pool type "DIAGNOSE".
///
///     auto diagnose = document->addPoolDiagnose(ZtDate::now());
///     auto step = diagnose->addStep(ZtDate::now(), "DNS", ZtPortalDiagnoseManual);
///     step->setCancelledRepair(1);
class ZT_EXPORT ZtPortalPoolDiagnose final : public ZtPortalPool {
 public:
  using Steps = std::vector<std::shared_ptr<ZtPortalPoolDiagnoseStep>>;

  static std::shared_ptr<ZtPortalPoolDiagnose> initWithValues(const ZtDate& timeStamp);

  ZtPortalPoolDiagnose(Creation creation, const ZtDate& timeStamp);
  ~ZtPortalPoolDiagnose() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  /// The step at `index`; throws like `ZtPortalPoolArray::field`.
  std::shared_ptr<ZtPortalPoolDiagnoseStep> diagnoseStep(std::int32_t index) const;
  /// Adds a step at the end and returns it, null if it cannot be added. `type` is a
  /// `ZtPortalDiagnoseType` or any other number, which is written as an empty value.
  std::shared_ptr<ZtPortalPoolDiagnoseStep> addStep(const ZtDate& timeStamp,
                                                    const ZtString& stepName, std::uint64_t type);
  /// The list itself, which the host may change; never null.
  std::shared_ptr<Steps> diagnoseSteps() const { return _diagnoseSteps; }

 private:
  friend struct zt::Fields<ZtPortalPoolDiagnose>;

  const std::shared_ptr<Steps> _diagnoseSteps = std::make_shared<Steps>();
};
