#include "tools/ztreport/description/DescribedReport.h"

#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedPool.h"

namespace zt::tools {

Json describedReport(const reader::ParsedReport& report) try {
  Json described = Json::object();
  ValueDescriber values(report);
  if (report.form != reader::Form::Empty) {
    described["customerId"] = values.text(report.customerId);
    described["applicationId"] = values.text(report.applicationId);
    described["applicationVersion"] = values.text(report.applicationVersion);
  }
  Json& pools = described["pools"] = Json::array();
  for (const reader::Pool& pool : report.pools) {
    pools.push_back(describedPool(report, pool, values));
  }
  return described;
} catch (const Undescribable& part) {
  throw reader::ReadError(reader::placeIn(report.text, part.offset()),
                          "expected " + part.expected());
}

}  // namespace zt::tools
