#include <array>
#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

#include "tests/faults/DeliveryCampaign.h"
#include "tests/faults/Failure.h"
#include "tests/faults/FaultCampaign.h"
#include "tests/faults/KillCampaign.h"
#include "tests/faults/Options.h"
#include "tests/faults/OwnProcesses.h"
#include "tests/faults/Preload.h"

namespace {

using zt::torture::Budget;
using zt::torture::Figures;
using zt::torture::Options;
using Clock = std::chrono::steady_clock;

constexpr int kPromiseBroken = 1;
constexpr int kMachineFailed = 3;

struct Campaign {
  const char* name;
  int percent;  ///< of the time that there is for all
  Figures (*run)(const Options&, Budget&);
};

constexpr std::array<Campaign, 3> kCampaigns{{
    {"delivery", 40, zt::torture::runDeliveryCampaign},
    {"faults", 35, zt::torture::runFaultCampaign},
    {"kills", 25, zt::torture::runKillCampaign},
}};

void print(const Figures& figures) {
  for (const auto& [name, count] : figures) std::cout << "  " << name << ": " << count << '\n';
}

int percentOfAll(const Options& options) {
  int sum = 0;
  for (const Campaign& campaign : kCampaigns) {
    if (options.campaigns.contains(campaign.name)) sum += campaign.percent;
  }
  return sum;
}

void run(const Campaign& campaign, const Options& options) {
  std::optional<std::chrono::seconds> time;
  if (options.time) time = *options.time * campaign.percent / percentOfAll(options);
  std::cout << campaign.name << ", seed " << options.seed << ", " << options.jobs << " processes"
            << std::endl;
  const auto start = Clock::now();
  Budget budget(time);
  print(campaign.run(options, budget));
  const auto took = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
  std::cout << campaign.name << ": every promise kept, in " << took.count() << " s" << std::endl;
}

}  // namespace

int main(int count, char** words) try {
  zt::torture::ensureInterposer(words);
  int status = 0;
  const std::optional<Options> options = zt::torture::readOptions(count, words, status);
  if (!options) return status;
  if (!ZT_IS_SANITIZED) zt::torture::leaveOtherProcesses();
  for (const Campaign& campaign : kCampaigns) {
    if (options->campaigns.contains(campaign.name)) run(campaign, *options);
  }
  return 0;
} catch (const zt::torture::Failure& failure) {
  std::cerr << "torture: " << failure.what() << '\n';
  return kPromiseBroken;
} catch (const std::exception& error) {
  std::cerr << "torture: " << error.what() << '\n';
  return kMachineFailed;
}
