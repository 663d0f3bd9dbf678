// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/OutputLines.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include "tools/common/Terminal.h"
#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

using terminal::terminalText;

constexpr std::size_t kLongestValue = 60;
constexpr std::size_t kLongestPoolList = 160;
constexpr std::string_view kGap = "  ";

std::string localTime(Timestamp timestamp) {
  const std::time_t time = std::chrono::system_clock::to_time_t(timestamp);
  std::tm local{};
  tzset();  // localtime_r() need not notice that the time zone has changed
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

constexpr int kReaderPatienceInMilliseconds = 500;
/// A pipe that is ready accepts 4,096 bytes without blocking (PIPE_BUF); the line about dropped
/// lines needs some of them.
constexpr std::size_t kLongestPart = 4'000;

/// As many lines as can be written at once, without the last line end.
std::string_view firstPart(std::string_view lines) {
  if (lines.size() <= kLongestPart) return lines;
  const std::size_t end = lines.rfind('\n', kLongestPart);
  return lines.substr(0, end != std::string_view::npos ? end : lines.find('\n'));
}

}  // namespace

std::string reportLine(const StoredReport& report) {
  const ReportIdentity& identity = report.identity;
  std::string line = localTime(report.received);
  appendText(line, kGap, "#", std::to_string(report.number), kGap, outcome(report.answer), kGap,
             shown(identity.customerId), kGap, shown(identity.applicationId), " ",
             shown(identity.applicationVersion), kGap, shown(identity.pools), kGap,
             std::to_string(report.size), " bytes");
  if (report.test) appendText(line, kGap, "test");
  if (report.duplicateOf) {
    appendText(line, kGap, "duplicate of #", std::to_string(*report.duplicateOf));
  }
  return line;
}

void LineOutput::write(std::string_view lines) {
  const std::lock_guard lock(_mutex);
  while (!lines.empty()) {
    const std::string_view part = firstPart(lines);
    writePart(part);
    lines.remove_prefix(std::min(part.size() + 1, lines.size()));
  }
}

void LineOutput::writePart(std::string_view lines) {
  if (!isReady()) {
    _dropped += static_cast<std::uint64_t>(std::ranges::count(lines, '\n')) + 1;
    return;
  }
  std::string bytes;
  if (_dropped > 0) {
    bytes.append("(").append(std::to_string(_dropped)).append(" lines dropped)\n");
  }
  _dropped = 0;
  bytes.append(lines).append("\n");
  writeAll(bytes);
}

/// After a dropped line, writing does not wait until the reader is back.
bool LineOutput::isReady() const {
  pollfd output{_descriptor, POLLOUT, 0};
  return ::poll(&output, 1, _dropped > 0 ? 0 : kReaderPatienceInMilliseconds) == 1;
}

void LineOutput::writeAll(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(_descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace zt::inbox
