#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/Child.h"
#include "ztportal/platform/process/ProgramPath.h"

namespace zt::test {

/// What came of one of the library's programs.
struct HelperRun {
  int status;
  std::string output;
  std::string errors;

  friend bool operator==(const HelperRun&, const HelperRun&) = default;
  friend void PrintTo(const HelperRun& run, std::ostream* out) {
    *out << run.status << " <" << run.output << "> <" << run.errors << ">";
  }
};

inline HelperRun runHelper(const std::string& name, const std::vector<std::string>& arguments) {
  Child child(libexecFolder() + "/" + name, arguments);
  std::string output = child.waitForOutput();
  std::string errors = child.waitForErrors();
  return {child.wait(), output, errors};
}

}  // namespace zt::test
