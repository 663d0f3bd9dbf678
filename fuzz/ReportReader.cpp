// SPDX-License-Identifier: Apache-2.0
#include "tools/common/ReportReader.h"

#include "fuzz/FuzzTarget.h"
#include "tools/ztreport/commands/ReportTree.h"
#include "tools/ztreport/description/DescribedReport.h"
#include "ztportal/portal/ZtReportDescription.h"

namespace {

void replaceFirst(std::string& text, const ZtString& part, std::string_view other) {
  text.replace(text.find(part.view()), part.view().size(), other);
}

std::string withLineFeeds(std::string_view text) {
  std::string lines(text);
  for (std::size_t at = 0; (at = lines.find("\r\n", at)) != std::string::npos;) lines.erase(at, 1);
  return lines;
}

}  // namespace

// A report's text, as `ztreport show` reads it. The description of a report must render to the same
// text again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const zt::reader::ParsedReport report = zt::reader::readReport(zt::fuzz::textOf(data, size));
  zt::fuzz::require(!zt::tools::reportTree(report, {}).empty());
  const std::string description = zt::tools::describedReport(report).text();
  const auto document = ZtReportDescription(description).makeOffline();
  std::string again = document->generateXml("", report.form == zt::reader::Form::Soap);
  if (!again.empty()) {
    replaceFirst(again, document->machineId(), report.machineId);
    replaceFirst(again, document->reportId(), report.reportId);
  }
  zt::fuzz::require(withLineFeeds(again) == withLineFeeds(report.text));
  return 0;
} catch (const zt::reader::ReadError&) {
  return 0;
}
