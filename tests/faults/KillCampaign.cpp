#include "tests/faults/KillCampaign.h"

#include <chrono>
#include <string>
#include <vector>

#include "tests/faults/CaseRunner.h"
#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/KilledWork.h"
#include "tests/faults/Preload.h"
#include "tests/faults/Recovery.h"
#include "tests/faults/Trial.h"

namespace zt::torture {

namespace {

constexpr std::chrono::seconds kPatience{60};

/// The report that the killed process was about: its file's name and its text, in this order.
struct Journal {
  std::string name;
  std::string text;

  static std::string line(const ZtPortalData& document, const std::string& text) {
    return fileNameOf(document) + "\n" + text;
  }
  static Journal read(const std::string& told) {
    const std::size_t end = told.find('\n');
    return {told.substr(0, end), end == std::string::npos ? "" : told.substr(end + 1)};
  }
};

/// What a kill left of a report: nothing, all of it, or its beginning. The name of the file when it
/// was cut short.
std::string judgeKilledReport(const FolderContent& before, FolderContent after,
                              const Journal& journal) {
  std::string cutShort;
  const auto own = after.find(journal.name);
  if (own != after.end()) {
    const std::string& text = own->second.value();
    if (!journal.text.starts_with(text)) throw Failure("the file is no part of the report");
    if (text != journal.text) cutShort = journal.name;
    after.erase(own);
  }
  if (after != before) throw Failure("another file of the store was changed");
  return cutShort;
}

void killAtCall(const FaultCase& which, Scene& scene, Figures& figures) {
  const Operation& operation = *which.operation;
  Attempt attempt;
  operation.prepare(scene, attempt);
  Trial trial([&](const Teller& teller) {
    operation.make(scene, attempt);
    teller.tell(Journal::line(*attempt.document, attempt.document->getSoapString()));
    Armed armed(which.plan);
    operation.act(attempt);
  });
  const TrialEnd end = trial.wait(kPatience);
  if (end.how == TrialEnd::How::kReturned) {
    ++figures["not reached this time"];
    return;
  }
  if (end.how != TrialEnd::How::kKilled || end.signal != SIGKILL) {
    throw Failure("not killed: " + end.told);
  }
  ++figures[std::string("killed at ") + nameOf(which.plan.call)];

  std::string cutShort;
  if (operation.purpose == Purpose::kResend) {
    judgeResent(scene, attempt.before);
  } else {
    cutShort = judgeKilledReport(attempt.before, scene.stored(), Journal::read(end.told));
  }
  const bool isWhole = cutShort.empty() && scene.stored().size() > attempt.before.size();
  if (operation.purpose == Purpose::kSaveAgain && !isWhole) {
    throw Failure("a complete report was lost while it was saved again");
  }
  if (!cutShort.empty()) ++figures["reports cut short in their saving"];
  scene.inbox().behave(R"({"answer": "accept"})");
  judgeRecovery(scene, cutShort);
}

Within withinAct(const Operation& /*operation*/) { return Within::kAct; }

std::vector<FaultCase> casesOf(const Operation& operation, const CallCounts& counts) {
  if (operation.purpose == Purpose::kProbe) return {};
  return killingCases(operation, counts);
}

}  // namespace

Figures runKillCampaign(const Options& options, Budget& budget) {
  Scene first;
  const std::vector<FaultCase> cases = allCases(first, options, withinAct, casesOf);
  return inShares(options.jobs, budget, [&](unsigned share) {
    Scene scene;
    Figures figures;
    if (share == 0) figures["cases at calls"] = cases.size();
    std::uint64_t kill = share;
    std::size_t next = share;
    // In turn, so that a limit on time leaves some of both.
    while (!budget.isSpent() && (next < cases.size() || kill < options.kills)) {
      if (next < cases.size()) {
        try {
          killAtCall(cases[next], scene, figures);
        } catch (const Failure& failure) {
          throw Failure(cases[next].text() + ": " + failure.what());
        }
        next += options.jobs;
      }
      if (kill < options.kills) {
        killAtRandomMoment(scene, options.seed, kill, figures);
        kill += options.jobs;
      }
    }
    return figures;
  });
}

}  // namespace zt::torture
