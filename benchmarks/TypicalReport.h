#pragma once

#include <memory>
#include <string>

#include "ztportal/ztportal.h"

namespace zt::bench {

/// A report of no server: nothing is asked for its configuration.
std::shared_ptr<ZtPortalData> emptyReport(const std::string& configurationUrl = "");

/// Fills a report with the inventory of a computer, a run of 40 steps, and 30 facts.
void addTypicalPools(ZtPortalData& report);
std::shared_ptr<ZtPortalData> typicalReport();

/// A report of a server whose text has about `bytes` bytes.
std::shared_ptr<ZtPortalData> reportOfSize(const std::string& configurationUrl, std::size_t bytes);

}  // namespace zt::bench
