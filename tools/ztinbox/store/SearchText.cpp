#include "tools/ztinbox/store/SearchText.h"

#include <algorithm>

#include "tools/common/ReportReader.h"
#include "tools/ztinbox/soap/ReportIdentity.h"

namespace zt::inbox {

namespace {

void addLine(std::string& text, std::string_view line) {
  const std::size_t left = kLongestSearchText - std::min(text.size(), kLongestSearchText);
  const std::string_view part = line.substr(0, std::min(kLongestSearchedValue, left));
  if (!part.empty()) text.append(part).append("\n");
}

}  // namespace

std::string searchText(std::string_view report) {
  const auto [content, fault] = reader::readReportUpToFault(report);
  if (fault) return std::string(report.substr(0, kLongestSearchText));
  std::string text;
  const ReportIdentity identity = readIdentity(report);
  for (const auto& value : {identity.reportId, identity.machineId, identity.customerId,
                            identity.applicationId, identity.applicationVersion}) {
    if (value) addLine(text, *value);
  }
  for (const reader::Pool& pool : content.pools) {
    addLine(text, pool.type);
    for (std::size_t i = pool.begin; i < pool.end; ++i) {
      addLine(text, content.fields[i].name);
      addLine(text, content.fields[i].value);
    }
  }
  return text;
}

}  // namespace zt::inbox
