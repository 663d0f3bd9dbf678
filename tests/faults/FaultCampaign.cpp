#include "tests/faults/FaultCampaign.h"

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/CaseRunner.h"
#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/Preload.h"
#include "tests/faults/Trial.h"
#include "tests/faults/Usage.h"

namespace zt::torture {

namespace {

using Clock = std::chrono::steady_clock;

/// A document asks twice, a delivery may ask twice again, tells the companion, and posts: two
/// seconds each.
constexpr std::chrono::seconds kTimeouts{12};
/// All that is done to one case; a process that takes longer hangs.
constexpr std::chrono::minutes kPatience{4};

/// What the fault hits is no more than an interruption: it may cost nothing.
bool isPassing(const FaultPlan& plan) {
  return plan.effect != Effect::kFail || plan.error == EINTR || plan.error == EAGAIN;
}

/// Whether the store itself could not take the report.
bool excusesLoss(const FaultPlan& plan, const FaultRecord& record, const std::string& dataFolder) {
  constexpr std::array kOfFiles{Call::kOpen, Call::kWrite, Call::kClose, Call::kMkdir};
  if (!record.struck || isPassing(plan)) return false;
  if (std::find(kOfFiles.begin(), kOfFiles.end(), plan.call) == kOfFiles.end()) return false;
  return plan.onwards || std::string_view(record.place.data()).starts_with(dataFolder);
}

/// One run of the case's operation with its fault, or without one.
class CaseRun {
 public:
  CaseRun(const FaultCase& which, Scene& scene) : _case(which), _scene(scene) {}

  FaultRecord disturbed() { return run(_case.plan); }
  void undisturbed() { run({}); }
  bool accepted() const { return _accepted; }

 private:
  FaultRecord run(const FaultPlan& plan) {
    Attempt attempt;
    _case.operation->prepare(_scene, attempt);
    const auto start = Clock::now();
    const bool isMadeBefore = strikable(*_case.operation) == Within::kAct;
    if (isMadeBefore) _case.operation->make(_scene, attempt);
    Armed armed(plan);
    if (!isMadeBefore) _case.operation->make(_scene, attempt);
    _case.operation->act(attempt);
    const FaultRecord record = armed.disarm();
    const auto took = Clock::now() - start;
    if (took > kTimeouts) throw Failure("took longer than its time-outs");
    const bool mayLose = !isMadeBefore && excusesLoss(plan, record, _scene.dataFolder());
    judge(*_case.operation, _scene, attempt, {!record.struck && took < kExchangeTimeout, mayLose});
    _accepted = attempt.accepted;
    return record;
  }

  FaultCase _case;
  Scene& _scene;
  bool _accepted = false;
};

/// The body of a trial.
void tryCase(const FaultCase& which, Scene& scene, std::size_t descriptors, const Teller& teller) {
  CaseRun run(which, scene);
  const FaultRecord record = run.disturbed();
  const bool accepted = run.accepted();
  run.undisturbed();
  if (usageNow().descriptors > descriptors) throw Failure("a descriptor is left open");
  if (::waitpid(-1, nullptr, WNOHANG) >= 0) throw Failure("a process is left behind");
  const std::string growing = growingWithEachRound([&run] {
    run.disturbed();
    run.undisturbed();
  });
  if (!growing.empty()) throw Failure("more with each time: " + growing);
  if (leakIsFound()) throw Failure("memory is lost");
  teller.tell(nlohmann::json{{"struck", record.struck}, {"accepted", accepted}}.dump());
}

std::string endText(const TrialEnd& end) {
  switch (end.how) {
    case TrialEnd::How::kHung:
      return "hangs";
    case TrialEnd::How::kKilled:
      return "died of signal " + std::to_string(end.signal);
    default:
      return end.told;
  }
}

}  // namespace

Figures runFaultCampaign(const Options& options, Budget& budget) {
  Scene first;
  const std::vector<FaultCase> cases = allCases(first, options, strikable, failingCases);
  return inShares(options.jobs, budget, [&](unsigned share) {
    Scene scene;
    std::map<const Operation*, std::size_t> descriptors;
    for (const Operation& operation : operations()) {
      descriptors[&operation] = measure(operation, scene, strikable(operation)).descriptors;
    }
    Figures figures;
    if (share == 0) figures["cases"] = cases.size();
    for (std::size_t i = share; i < cases.size() && !budget.isSpent(); i += options.jobs) {
      Trial trial([&](const Teller& teller) {
        tryCase(cases[i], scene, descriptors[cases[i].operation], teller);
      });
      const TrialEnd end = trial.wait(kPatience);
      if (end.how != TrialEnd::How::kReturned) throw Failure(cases[i].text() + ": " + endText(end));
      const auto told = nlohmann::json::parse(end.told);
      ++figures["tried"];
      if (!told.at("struck")) ++figures["not reached this time"];
      ++figures[std::string("failing ") + nameOf(cases[i].plan.call)];
      if (told.at("accepted")) ++figures["accepted all the same"];
    }
    return figures;
  });
}

}  // namespace zt::torture
