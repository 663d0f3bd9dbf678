#include "tools/common/TerminalStyle.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace zt::terminal {

namespace {

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

TerminalStyle outputStyle() {
  TerminalStyle style;
  if (::isatty(STDOUT_FILENO) == 0) return style;
  style.hasColours = variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) style.columns = size.ws_col;
  return style;
}

}  // namespace zt::terminal
