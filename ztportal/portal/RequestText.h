// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtPortalPool.h"

namespace zt {

/// The header values of a report. Missing values are written "(null)".
struct ReportHeader {
  ZtString reportId;
  ZtString machineId;
  ZtString customerId;
  ZtString applicationId;
  ZtString applicationVersion;
};

/// The SOAP 1.1 request `postPoolDatas`, or without `soap` the same body as a plain XML document.
/// Lines end with CR LF; values are escaped only if the host wants that. Empty without pools.
/// Throws what a pool throws while it is written.
std::string reportText(const ReportHeader& header,
                       const std::vector<std::shared_ptr<ZtPortalPool>>& pools, bool soap);

/// The customer ID of a request in test mode ("Kelvane_Test"). A missing ID stays missing.
ZtString testCustomerId(const ZtString& customerId);

/// The SOAP 1.1 request `getVersionInfo`, in one line without a line end.
std::string versionRequest();

}  // namespace zt
