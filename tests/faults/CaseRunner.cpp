#include "tests/faults/CaseRunner.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "tests/faults/Failure.h"
#include "tests/faults/Preload.h"
#include "tests/faults/Random.h"
#include "tests/faults/Trial.h"
#include "tests/faults/Usage.h"

namespace zt::torture {

namespace {

constexpr std::chrono::seconds kPatience{60};

CallCounts runUndisturbed(const Operation& operation, Scene& scene, Within within) {
  Attempt attempt;
  operation.prepare(scene, attempt);
  if (within == Within::kAct) operation.make(scene, attempt);
  Armed armed{FaultPlan{}};
  if (within == Within::kAll) operation.make(scene, attempt);
  operation.act(attempt);
  const FaultRecord record = armed.disarm();
  judge(operation, scene, attempt, {false});
  return record.counts;
}

/// In the order that the seed gives, but with the first of each operation's kinds of calls before
/// the second of any, so that the many readings of large folders do not crowd out the rest.
void shuffle(std::vector<FaultCase>& cases, std::uint64_t seed) {
  Random random(seed, 0);
  for (std::size_t left = cases.size(); left > 1; --left) {
    std::swap(cases[left - 1], cases[random.below(left)]);
  }
  std::map<std::pair<const Operation*, Call>, unsigned> seen;
  std::vector<std::pair<unsigned, FaultCase>> ranked;
  for (const FaultCase& each : cases) {
    ranked.emplace_back(seen[{each.operation, each.plan.call}]++, each);
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  std::transform(ranked.begin(), ranked.end(), cases.begin(),
                 [](const auto& each) { return each.second; });
}

}  // namespace

Within strikable(const Operation& operation) {
  return operation.purpose == Purpose::kSaveAgain ? Within::kAct : Within::kAll;
}

Reference measure(const Operation& operation, Scene& scene, Within within) {
  Trial trial([&](const Teller& teller) {
    const CallCounts counts = runUndisturbed(operation, scene, within);
    runUndisturbed(operation, scene, within);
    teller.tell(nlohmann::json{{"counts", counts}, {"open", usageNow().descriptors}}.dump());
  });
  const TrialEnd end = trial.wait(kPatience);
  if (end.how != TrialEnd::How::kReturned) {
    throw Failure(std::string(operation.name) + ", undisturbed: " + end.told);
  }
  const auto told = nlohmann::json::parse(end.told);
  return {told.at("counts").get<CallCounts>(), told.at("open").get<std::size_t>()};
}

std::vector<FaultCase> allCases(Scene& scene, const Options& options,
                                Within (*within)(const Operation&), MakeCases make) {
  std::vector<FaultCase> all;
  for (const Operation& operation : operations()) {
    const Reference reference = measure(operation, scene, within(operation));
    const std::vector<FaultCase> cases = make(operation, reference.counts);
    all.insert(all.end(), cases.begin(), cases.end());
  }
  if (options.time) shuffle(all, options.seed);
  return all;
}

}  // namespace zt::torture
