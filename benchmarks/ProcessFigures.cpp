// SPDX-License-Identifier: Apache-2.0
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/Figure.h"
#include "benchmarks/LoopbackServer.h"
#include "benchmarks/Reports.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"
#include "ztportal/platform/process/ProgramPath.h"

// Times of whole processes: the first report, a host that never reports, the probe; and values that
// are set in Python.

namespace zt::bench {

namespace {

/// Runs a program to its end, without the pipes and threads of `test::Subprocess`, whose time would
/// count.
void run(std::vector<std::string> words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  pid_t process = -1;
  int status = -1;
  if (::posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
      ::waitpid(process, &status, 0) != process || status != 0) {
    throw std::runtime_error(words[0] + " failed");
  }
}

/// A kind of memory of a program that has just started, in MiB (proc_pid_smaps(5)).
double memory(const std::string& program, std::string_view kind) {
  test::Subprocess host({program, "stay"});
  if (!host.readLine(std::chrono::seconds(10))) throw std::runtime_error(program + " is gone");
  std::ifstream rollup("/proc/" + std::to_string(host.pid()) + "/smaps_rollup");
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with(kind)) return std::stod(line.substr(kind.size())) / 1024.0;
  }
  throw std::runtime_error("no memory of " + program);
}

}  // namespace

/// From the start of a process to its first accepted report, compared with curl making the same
/// three requests. There is no session bus, because curl does not use one.
std::vector<Figure> firstReportFigures() {
  const LoopbackServer server;
  const test::TemporaryFolder folder;
  const test::ScopedEnvironment bus("DBUS_SESSION_BUS_ADDRESS", nullptr);
  const test::ScopedEnvironment runtime("XDG_RUNTIME_DIR", nullptr);
  const test::ScopedEnvironment proxy("http_proxy", nullptr);
  const std::string version = folder.write("version", "<getVersionInfo/>");
  const auto report = emptyReport();
  report->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  const std::string text = folder.write("report", report->generateXml(nullptr, true));
  const auto curl = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"curl", "-s", "-o", "/dev/null"});
    run(more);
  };
  const std::vector<double> best =
      fastest(80, {[&] {
                     run({ZT_FIRST_REPORT, server.configurationUrl()});
                   },
                   [&] {
                     curl({server.configurationUrl()});
                     curl({"--data-binary", "@" + version, server.reportUrl()});
                     curl({"--data-binary", "@" + text, server.reportUrl()});
                   }});
  return {atMostTimes(1.0, "process start to first accepted report", best[0] * 1e3,
                      {"three curl processes", best[1] * 1e3}, "ms")};
}

/// The cost of the shared library for a host that never reports.
std::vector<Figure> idleHostFigures() {
  const std::vector<double> best =
      fastest(300, {[] { run({ZT_IDLE_HOST}); }, [] { run({ZT_EMPTY_PROGRAM}); }});
  const double seconds = best[0] - best[1];
  const auto added = [](std::string_view kind) {
    return memory(ZT_IDLE_HOST, kind) - memory(ZT_EMPTY_PROGRAM, kind);
  };
  Figure start = atMost(2, "start-up added to a host that never reports", seconds * 1e3, "ms");
  start.peer = "empty program: " + measure(best[1] * 1e3, "ms");
  Figure all = atMost(5, "memory added to it", added("Rss:"), "MiB");
  all.peer = "empty program";
  Figure own = atMost(1, "of which no other process can share", added("Private_Dirty:"), "MiB");
  own.peer = "empty program";
  return {start, all, own};
}

/// The inventory of this machine, compared with the shell that it starts to find the user's group.
std::vector<Figure> probeFigures() {
  setEnvironment();
  LinuxSubprocesses shell(libexecFolder());
  const std::string command =
      "dscl . -read " + homeFolder() + " PrimaryGroupID | awk '{ print $2 }'";
  const std::vector<double> best =
      fastest(150, {[] { ZtPortalPoolComputerSystem::initWithValues(ZtDate::now(), true); },
                    [&] {
                      shell.output("/bin/bash", {"-c", command});
                    }});
  return {
      atMostTimes(1.3, "the inventory", best[0] * 1e3, {"its subprocess", best[1] * 1e3}, "ms")};
}

/// The cost of a value in Python, compared with an attribute of an object that checks nothing.
std::vector<Figure> pythonFigures() {
  const test::ScopedEnvironment package("PYTHONPATH", ZT_PYTHON_PACKAGE);
  const test::ScopedEnvironment library("ZTPORTAL_LIBRARY", ZT_PYTHON_LIBRARY);
  const test::ProgramResult result = test::runProgram(ZT_PYTHON, {ZT_PYTHON_VALUES});
  std::istringstream printed(result.output);
  double ours = 0;
  double plain = 0;
  if (!(printed >> ours >> plain)) throw std::runtime_error(result.errors);
  Figure figure = atMost(3, "a value set from Python", ours, "us");
  figure.peer = "an attribute of a plain object: " + measure(plain, "us");
  return {figure};
}

}  // namespace zt::bench
