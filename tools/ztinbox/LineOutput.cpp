#include "tools/ztinbox/LineOutput.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

namespace zt::inbox {

namespace {

constexpr int kMomentInMilliseconds = 500;
/// A pipe that is ready takes 4,096 bytes without waiting (PIPE_BUF); some are for the line about
/// those left out.
constexpr std::size_t kLongestPart = 4'000;

/// As many lines as can be written at once, without the last one's line end.
std::string_view firstPart(std::string_view lines) {
  if (lines.size() <= kLongestPart) return lines;
  const std::size_t end = lines.rfind('\n', kLongestPart);
  return lines.substr(0, end != std::string_view::npos ? end : lines.find('\n'));
}

}  // namespace

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
    _leftOut += static_cast<std::uint64_t>(std::ranges::count(lines, '\n')) + 1;
    return;
  }
  std::string bytes;
  if (_leftOut > 0) {
    bytes.append("(").append(std::to_string(_leftOut)).append(" lines left out)\n");
  }
  _leftOut = 0;
  bytes.append(lines).append("\n");
  writeAll(bytes);
}

/// Once a line was left out, there is no more waiting until the reader is back.
bool LineOutput::isReady() const {
  pollfd output{_descriptor, POLLOUT, 0};
  return ::poll(&output, 1, _leftOut > 0 ? 0 : kMomentInMilliseconds) == 1;
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
