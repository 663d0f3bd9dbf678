#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "ztportal/ztportal.h"

// The reports that several figures measure.

namespace zt::bench {

/// Sets the zone and the locale that timestamps are written in: Berlin, German.
void setEnvironment();

/// The time of a report's step, from 2026-11-21T12:00:00Z on.
ZtDate stepTime(std::size_t step);

/// A report without pools; without a URL it reads no configuration.
std::shared_ptr<ZtPortalData> emptyReport(const std::string& configurationUrl = "");
/// A report with the inventory of a computer, a run of 40 steps, and 30 facts.
std::shared_ptr<ZtPortalData> typicalReport();
/// A report whose text has about `bytes` bytes.
std::shared_ptr<ZtPortalData> reportOfSize(const std::string& configurationUrl, std::size_t bytes);

}  // namespace zt::bench
