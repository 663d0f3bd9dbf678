#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/TypicalReport.h"
#include "benchmarks/figures/BareParts.h"
#include "benchmarks/figures/Desktop.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "benchmarks/figures/LoopbackServer.h"

// One delivery of a report of 20 kB beside the sum of its parts. The test mode is looked up three
// times on the way: for the text, for the way to the server, and for the post.

namespace zt::bench {

namespace {
constexpr std::size_t kBytes = 20'000;
constexpr int kLookUps = 3;
}  // namespace

std::vector<Figure> deliveryFigures() {
  const LoopbackServer server;
  const Desktop desktop;
  setEnvironment();
  const auto report = reportOfSize(server.configurationUrl(), kBytes);
  const std::string text = report->getSoapString();
  const std::string url = server.reportUrl();
  BarePost post;
  const Work ours = [&] {
    if (!report->reportToServer()) throw std::runtime_error("a report was not accepted");
  };
  const Work theirs = [&] {
    for (int i = 0; i < kLookUps; ++i) walkBareProcessTable();
    sendBareSignal(text);
    post.post(url, text);
  };
  const std::vector<double> best = fastest(1500, {ours, theirs});
  return {atMostTimes(1.15, "one delivery of a 20 kB report", best[0] * 1e6,
                      {"its parts barely", best[1] * 1e6}, "us")};
}

}  // namespace zt::bench
