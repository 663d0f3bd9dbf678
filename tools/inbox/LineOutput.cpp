#include "tools/inbox/LineOutput.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace zt::inbox {

namespace {

constexpr int kMomentInMilliseconds = 500;

}  // namespace

void LineOutput::write(std::string_view line) {
  const std::lock_guard lock(_mutex);
  if (!isReady()) {
    ++_leftOut;
    return;
  }
  std::string bytes;
  if (_leftOut > 0) {
    bytes.append("(").append(std::to_string(_leftOut)).append(" lines left out)\n");
  }
  _leftOut = 0;
  bytes.append(line).append("\n");
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
