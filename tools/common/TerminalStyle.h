#pragma once

#include <cstddef>

namespace zt::terminal {

/// What the reader of a program's output gets to see.
struct TerminalStyle {
  bool hasColours = false;
  std::size_t columns = 0;  ///< of a line; 0: as many as there are
};

/// The style for standard output: colours and the width of the window on a terminal, neither
/// elsewhere. No colours either where `NO_COLOR` is set and not empty (https://no-color.org) or
/// `TERM` is "dumb".
TerminalStyle outputStyle();

}  // namespace zt::terminal
