#include <benchmark/benchmark.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

#include "benchmarks/figures/BareParts.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"

// One walk of the process table of a machine with 1,000 processes.

namespace zt::bench {

namespace {

constexpr std::size_t kProcesses = 1000;

/// As many sleeping processes as make `kProcesses` on the whole machine.
class SleepingProcesses {
 public:
  SleepingProcesses() {
    for (std::size_t running = walkBareProcessTable(); running < kProcesses; ++running) {
      const pid_t process = ::fork();
      if (process < 0) throw std::runtime_error("no 1,000 processes");
      if (process == 0) sleepUntilKilled();
      _processes.push_back(process);
    }
  }
  SleepingProcesses(const SleepingProcesses&) = delete;
  SleepingProcesses& operator=(const SleepingProcesses&) = delete;
  ~SleepingProcesses() {
    for (const pid_t process : _processes) ::kill(process, SIGKILL);
    for (const pid_t process : _processes) ::waitpid(process, nullptr, 0);
  }

 private:
  [[noreturn]] static void sleepUntilKilled() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) ::pause();
  }

  std::vector<pid_t> _processes;
};

}  // namespace

std::vector<Figure> processWalkFigures() {
  const SleepingProcesses processes;
  LinuxRunningApplications applications;
  const std::vector<double> best =
      fastest(400, {[&] { benchmark::DoNotOptimize(applications.list()); },
                    [] { benchmark::DoNotOptimize(walkBareProcessTable()); }});
  return {atMostTimes(1.2, "a process table of 1,000 walked", best[0] * 1e6,
                      {"folder and links read", best[1] * 1e6}, "us")};
}

}  // namespace zt::bench
