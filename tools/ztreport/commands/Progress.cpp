#include "tools/ztreport/commands/Progress.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

namespace zt::tools {

namespace {

// ECMA-48: back to the first column, and erase the line from there.
constexpr const char* kEraseLine = "\r\033[K";

bool isTerminal() {
  const char* const kind = ::getenv("TERM");
  return kind != nullptr && std::string_view(kind) != "dumb" && ::isatty(STDERR_FILENO) == 1;
}

}  // namespace

Progress::Progress(std::size_t all) : _all(all), _isShown(isTerminal()) { show(0); }

Progress::~Progress() {
  if (_isShown) std::fputs(kEraseLine, stderr);
}

void Progress::show(std::size_t done) const {
  if (!_isShown) return;
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - _start;
  const double rate = done == 0 ? 0 : static_cast<double>(done) / passed.count();
  std::fprintf(stderr, "%s%zu sent, %zu left, %.1f a second", kEraseLine, done, _all - done, rate);
  std::fflush(stderr);
}

}  // namespace zt::tools
