#include <exception>
#include <iostream>
#include <string>

#include "tools/ztreport/CommandLine.h"

namespace {

using zt::tools::Exit;
using zt::tools::Failure;

int failed(const std::string& message, Exit exit) {
  std::cerr << "ztreport: " << message << '\n';
  return static_cast<int>(exit);
}

}  // namespace

int main(int argc, char** argv) try {
  return static_cast<int>(zt::tools::CommandLine().run(argc, argv));
} catch (const Failure& failure) {
  return failed(failure.what(), failure.exit());
} catch (const std::exception& error) {
  return failed(error.what(), Exit::MachineFailed);
}
