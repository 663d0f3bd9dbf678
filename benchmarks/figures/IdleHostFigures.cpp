#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "tests/support/ChildProcess.h"

// What a host that never reports pays for the shared library, beside an empty program.

namespace zt::bench {

namespace {

void run(const std::string& program) { test::ChildProcess({program}).wait(); }

/// The resident memory of a program that has just started, in MiB; pages that it shares count.
double residentMemory(const std::string& program) {
  test::ChildProcess child({program, "stay"});
  if (!child.readLine(std::chrono::seconds(10))) throw std::runtime_error(program + " is gone");
  std::ifstream rollup("/proc/" + std::to_string(child.pid()) + "/smaps_rollup");
  constexpr std::string_view kName = "Rss:";
  for (std::string line; std::getline(rollup, line);) {
    if (line.starts_with(kName)) return std::stod(line.substr(kName.size())) / 1024.0;
  }
  throw std::runtime_error("no memory of " + program);
}

}  // namespace

std::vector<Figure> idleHostFigures() {
  const std::vector<double> best =
      fastest(300, {[] { run(ZT_IDLE_HOST); }, [] { run(ZT_EMPTY_PROGRAM); }});
  const double added = (best[0] - best[1]) * 1e3;
  const double memory = residentMemory(ZT_IDLE_HOST);
  Figure start = atMost(2, "start-up added to a host that never reports", added, "ms");
  start.peer = "empty program: " + measure(best[1] * 1e3, "ms");
  Figure all = atMost(1, "memory added to it", memory - residentMemory(ZT_EMPTY_PROGRAM), "MiB");
  all.peer = "empty program";
  Figure own = atMost(1, "memory added to it", memory - residentMemory(ZT_RUNTIME_PROGRAM), "MiB");
  own.peer = "empty one with the C++ runtime";
  return {start, all, own};
}

}  // namespace zt::bench
