#pragma once

#include <string>

#include "tools/ztreport/Failure.h"

namespace zt::tools {

/// Each command reads what it needs, does its work, prints its result on standard output and gives
/// the exit status; `Failure` is raised for everything that ends it early. `file` is a report
/// description, "-" standard input.

/// Prints the report's text.
Exit render(const std::string& file, bool plain);
/// Posts the report; saves it when it is not accepted. An empty `configurationUrl` leaves the
/// description's own.
Exit send(const std::string& file, const std::string& configurationUrl);
/// Saves the report without sending it, and prints the path of its file.
Exit save(const std::string& file);

}  // namespace zt::tools
