// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ztportal/ztportal.h"

// Reports that several benchmarks use.

namespace zt::bench {

/// Sets the time zone and the locale of timestamps to Berlin and German.
void setEnvironment();

/// The time of a report's step; step 0 is at 2026-11-21T12:00:00Z.
ZtDate stepTime(std::size_t step);

/// A report without pools. Without a URL it reads no configuration.
std::shared_ptr<ZtPortalData> emptyReport(const std::string& configurationUrl = "");
/// A report with the inventory of a computer, a run of 40 steps, and 30 facts.
std::shared_ptr<ZtPortalData> typicalReport();
/// A report whose text has about `bytes` bytes.
std::shared_ptr<ZtPortalData> reportOfSize(const std::string& configurationUrl, std::size_t bytes);

}  // namespace zt::bench
