#pragma once

#include <string>
#include <vector>

namespace zt::tools {

/// The companion application as it runs on this machine.
struct Companion {
  std::string path;  ///< its bundle
  bool hasList;      ///< whether its property list "ghost", which can switch test mode on, is there
};

/// The companions that run, each bundle once: those of the processes whose executable (proc(5))
/// this user may see.
std::vector<Companion> runningCompanions();

}  // namespace zt::tools
