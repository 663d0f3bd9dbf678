#pragma once

#include <string>
#include <vector>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// One whole run of a program, as the command line tells it.
struct RunOptions {
  std::string customer;
  std::string applicationId;
  std::string startPoint;
  std::string endPoint;
  std::vector<std::string> facts;  // "NAME=VALUE"
  std::vector<std::string> flags;  // "NAME=yes" or "NAME=no"
  std::vector<std::string> steps;  // "TYPE:NAME"
  bool save = false;
};

/// Reports the run and tells how that went; with `save` it is saved without sending. All options
/// are read before anything else happens.
Exit run(const RunOptions& options);

}  // namespace zt::tools
