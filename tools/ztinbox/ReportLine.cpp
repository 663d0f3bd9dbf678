#include "tools/ztinbox/ReportLine.h"

#include <array>
#include <ctime>

#include "tools/common/Terminal.h"

namespace zt::inbox {

namespace {

using terminal::terminalText;

constexpr std::size_t kLongestValue = 60;
constexpr std::size_t kLongestPoolList = 160;
constexpr std::string_view kGap = "  ";

std::string localTime(std::chrono::system_clock::time_point moment) {
  const std::time_t time = std::chrono::system_clock::to_time_t(moment);
  std::tm local{};
  localtime_r(&time, &local);
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
  return {text.data(), length};
}

std::string shown(const std::optional<std::string>& value) {
  if (!value || value->empty()) return "-";
  return terminalText(*value, kLongestValue);
}

std::string shown(const std::vector<std::string>& pools) {
  if (pools.empty()) return "-";
  std::string list;
  for (const std::string& pool : pools) {
    if (!list.empty()) list += ", ";
    list += pool;
    if (list.size() > kLongestPoolList * 4) break;
  }
  return terminalText(list, kLongestPoolList);
}

}  // namespace

std::string reportLine(const Report& report) {
  const ReportIdentity& identity = report.identity;
  std::string line = localTime(report.received);
  line.append(kGap).append("#").append(std::to_string(report.number));
  line.append(kGap).append(outcome(report.answer));
  line.append(kGap).append(shown(identity.customerId));
  line.append(kGap).append(shown(identity.applicationId));
  line.append(" ").append(shown(identity.applicationVersion));
  line.append(kGap).append(shown(identity.pools));
  line.append(kGap).append(std::to_string(report.size)).append(" bytes");
  if (report.test) line.append(kGap).append("test");
  if (report.duplicateOf) {
    line.append(kGap).append("duplicate of #").append(std::to_string(*report.duplicateOf));
  }
  return line;
}

}  // namespace zt::inbox
