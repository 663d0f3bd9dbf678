#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/TypicalReport.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "benchmarks/figures/LoopbackServer.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

// From the start of a process to its first accepted report, beside curl making the same three
// requests. There is no session bus, as curl broadcasts nothing.

namespace zt::bench {

namespace {

void run(const std::vector<std::string>& words) {
  if (test::ChildProcess(words).wait() != 0) throw std::runtime_error(words[0] + " failed");
}

}  // namespace

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

}  // namespace zt::bench
