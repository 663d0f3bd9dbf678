#include "tools/ztreport/description/DescribedReport.h"

#include "tools/common/Place.h"
#include "tools/ztreport/description/DescribedPool.h"

namespace zt::tools {

using nlohmann::ordered_json;

ordered_json describedReport(const reader::Report& report) try {
  ordered_json described = ordered_json::object();
  ValueDescriber values(report);
  if (report.form != reader::Form::Empty) {
    described["customerId"] = values.text(report.customerId);
    described["applicationId"] = values.text(report.applicationId);
    described["applicationVersion"] = values.text(report.applicationVersion);
  }
  ordered_json& pools = described["pools"] = ordered_json::array();
  for (const reader::Pool& pool : report.pools) {
    pools.push_back(describedPool(report, pool, values));
  }
  return described;
} catch (const Undescribable& part) {
  throw reader::ReadError(reader::placeIn(report.text, part.offset()),
                          "expected " + part.expected());
}

}  // namespace zt::tools
