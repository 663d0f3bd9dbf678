// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "tools/common/StopSignals.h"
#include "tools/ztinbox/CommandLine.h"
#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/InboxServer.h"
#include "tools/ztinbox/OutputLines.h"

namespace {

using zt::StopSignals;
using zt::inbox::CommandLine;
using zt::inbox::InboxServer;
using zt::inbox::InputFault;
using zt::inbox::LineOutput;
using zt::inbox::readCommandLine;

constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;

void run(const CommandLine& commandLine) {
  if (!commandLine.settings) {
    std::fputs(commandLine.text.c_str(), stdout);
    return;
  }
  // The inbox must not end when the reader of its output does.
  std::signal(SIGPIPE, SIG_IGN);
  const StopSignals stop;
  LineOutput output(STDOUT_FILENO);
  InboxServer server(*commandLine.settings, [&](std::string_view line) { output.write(line); });
  output.write("ztinbox: listening on " + server.url());
  server.run(stop.number());
}

int failed(int status, const std::exception& fault) {
  std::fprintf(stderr, "ztinbox: %s\n", fault.what());
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(readCommandLine(argc, argv));
    return 0;
  } catch (const InputFault& fault) {
    return failed(kWrongUsage, fault);
  } catch (const std::exception& fault) {
    return failed(kMachineFailed, fault);
  }
}
