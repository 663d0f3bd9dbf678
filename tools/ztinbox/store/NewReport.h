#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/soap/Report.h"
#include "tools/ztinbox/soap/ReportContent.h"

namespace zt::inbox {

/// A report on its way into the store.
struct NewReport {
  Report report;  ///< its number, duplicateOf and read are given by the store
  std::string head;
  std::string packedBody;  ///< of report.size bytes
  std::vector<StepDuration> steps;

  /// Sets what the list and the charts show of the report's text `body`.
  void read(std::string_view body);

  /// About how much memory it takes.
  std::size_t memory() const;
};

}  // namespace zt::inbox
