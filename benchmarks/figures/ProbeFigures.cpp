#include <string>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"
#include "ztportal/platform/process/ProgramPath.h"

// The inventory of this machine beside the shell that it asks for the user's group.

namespace zt::bench {

std::vector<Figure> probeFigures() {
  setEnvironment();
  LinuxSubprocesses child(libexecFolder());
  const std::string command =
      "dscl . -read " + homeFolder() + " PrimaryGroupID | awk '{ print $2 }'";
  const std::vector<double> best =
      fastest(150, {[] { ZtPortalPoolComputerSystem::initWithValues(ZtDate::now(), true); },
                    [&] {
                      child.output("/bin/bash", {"-c", command});
                    }});
  return {atMostTimes(1.3, "the probe", best[0] * 1e3, {"its child process", best[1] * 1e3}, "ms")};
}

}  // namespace zt::bench
