#include "tools/inbox/store/NewReport.h"

#include <utility>

namespace zt::inbox {

void NewReport::read(std::string_view body) {
  ReportContent content = readContent(body);
  report.identity = std::move(content.identity);
  report.result = std::move(content.result);
  report.duration = content.duration;
  report.size = body.size();
  steps = std::move(content.steps);
}

}  // namespace zt::inbox
