// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolExecutionStep.h"
#include "ztportal/pools/ZtPortalRunResult.h"

/// One run of a host application: where and when it began and ended, its result, and its steps.
/// Pool type "EXECUTION".
///
///     auto execution = document->addPoolExecution(ZtDate::now());
///     execution->setStartPoint("setup");
///     execution->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter);
///     execution->setEndResultCode("0");
///
/// A new pool starts and ends at its own timestamp, is successful, not cancelled, of the type
/// "Standard", and its strings are empty.
class ZT_EXPORT ZtPortalPoolExecution final : public ZtPortalPool, public ZtPortalRunResult {
 public:
  static std::shared_ptr<ZtPortalPoolExecution> initWithValues(const ZtDate& timeStamp);

  ZtPortalPoolExecution(Creation creation, const ZtDate& timeStamp);
  ~ZtPortalPoolExecution() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  /// Adds a step at the end and returns it, null if it cannot be added. `type` is a
  /// `ZtPortalStepType` or any other number, which is written as an empty value.
  std::shared_ptr<ZtPortalPoolExecutionStep> addStep(const ZtDate& timeStamp,
                                                     const ZtString& stepName, std::uint64_t type);
  /// The step at `index`; throws like `ZtPortalPoolArray::field`.
  std::shared_ptr<ZtPortalPoolExecutionStep> executionStep(std::int32_t index) const;
  /// A snapshot of the steps.
  std::vector<std::shared_ptr<ZtPortalPoolExecutionStep>> executionSteps() const;

  ZtString startPoint() const { return _startPoint.load(); }
  void setStartPoint(ZtString value) { _startPoint.store(std::move(value)); }
  ZtString endPoint() const { return _endPoint.load(); }
  void setEndPoint(ZtString value) { _endPoint.store(std::move(value)); }
  ZtBOOL cancelled() const { return _cancelled; }
  void setCancelled(ZtBOOL value) { _cancelled = value; }
  ZtString executionType() const { return _executionType.load(); }
  void setExecutionType(ZtString value) { _executionType.store(std::move(value)); }

 private:
  friend struct zt::Fields<ZtPortalPoolExecution>;

  std::vector<std::shared_ptr<ZtPortalPoolExecutionStep>> _executionSteps;
  ZtAtomic<ZtString> _startPoint{ZtString::constant<"">()};
  ZtAtomic<ZtString> _endPoint{ZtString::constant<"">()};
  ZtBOOL _cancelled = 0;
  ZtAtomic<ZtString> _executionType{ZtString::constant<"Standard">()};
};
