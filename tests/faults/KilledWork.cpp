#include "tests/faults/KilledWork.h"

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/Random.h"
#include "tests/faults/Recovery.h"
#include "tests/faults/ServerRecords.h"
#include "tests/faults/Trial.h"

namespace zt::torture {

namespace {

using nlohmann::json;

constexpr std::uint64_t kLongest = 150;  // milliseconds

/// A report of the killed host, as its journal has it.
struct Begun {
  std::string text;
  bool ended = false;     ///< sending or saving it was over
  bool accepted = false;  ///< as the library told
};

/// Each report is in the journal with all its text before anything is done with it.
void work(const Scene& scene, Random random, const Teller& teller) {
  for (;;) {
    const auto document = makeDocument(scene.configurationUrl());
    fill(*document, random);
    const std::string name = fileNameOf(*document);
    teller.tell(json{{"begun", name}, {"text", document->getSoapString()}}.dump() + "\n");
    bool accepted = false;
    if (random.below(2) == 0) {
      accepted = document->reportToServer();
    } else {
      document->saveReport();
    }
    teller.tell(json{{"ended", name}, {"accepted", accepted}}.dump() + "\n");
    if (!accepted && random.below(4) == 0) document->saveReport();
    if (random.below(4) == 0) document->sendSavedReports();
  }
}

/// What the kill left of the journal's last line does not count.
std::map<std::string, Begun> readJournal(const std::string& told) {
  std::map<std::string, Begun> reports;
  std::istringstream lines(told.substr(0, told.rfind('\n') + 1));
  for (std::string line; std::getline(lines, line);) {
    const json entry = json::parse(line);
    if (entry.contains("begun")) {
      reports[entry.at("begun")].text = entry.at("text");
    } else {
      Begun& report = reports[entry.at("ended")];
      report.ended = true;
      report.accepted = entry.at("accepted");
    }
  }
  return reports;
}

bool isWithServer(const std::vector<ServerRecord>& records, const std::string& name,
                  const std::string& text) {
  for (const ServerRecord& record : records) {
    if (!record.accepted || record.id + ".ztr" != name) continue;
    if (record.text == text || record.text == resentText(text)) return true;
  }
  return false;
}

/// The name of the file that was cut short; empty when there is none.
std::string judgeReports(Scene& scene, const std::map<std::string, Begun>& reports,
                         Figures& figures) {
  const FolderContent files = scene.stored();
  const std::vector<ServerRecord> records = allRecordsOf(scene.inbox());
  std::string cutShort;
  for (const auto& [name, report] : reports) {
    const auto file = files.find(name);
    const bool isStored = file != files.end() && file->second == report.text;
    const bool isBroken = file != files.end() && !isStored;
    if (isBroken && report.ended) throw Failure("a complete report was changed: " + name);
    if (isBroken && !report.text.starts_with(file->second.value())) {
      throw Failure("the file is no part of the report: " + name);
    }
    if (isBroken) cutShort = name;
    const bool arrived = isWithServer(records, name, report.text);
    if (report.ended && !isStored && !arrived) throw Failure("lost: " + name);
    if (report.accepted && !arrived) throw Failure("confirmed, but not with the server: " + name);
    ++figures[!report.ended ? "reports being sent or saved when killed"
              : arrived     ? "reports with the server"
                            : "reports in the store"];
  }
  for (const auto& [name, content] : files) {
    if (name != "notes.txt" && !reports.contains(name) && !scene.savedEarlier().contains(name)) {
      throw Failure("the store has a file too many: " + name);
    }
  }
  return cutShort;
}

}  // namespace

void killAtRandomMoment(Scene& scene, std::uint64_t seed, std::uint64_t number, Figures& figures) {
  Random random(seed, number);
  scene.inbox().clear();
  scene.inbox().behave(R"({"answer": "accept", "failRate": 0.3, "seed": )" +
                       std::to_string(random.below(1'000'000)) + "}");
  scene.fillStore(1);
  const std::chrono::milliseconds moment(1 + random.below(kLongest));
  Trial trial([&](const Teller& teller) { work(scene, random, teller); });
  const TrialEnd end = trial.wait(moment);
  scene.inbox().behave(R"({"answer": "accept", "failRate": 0})");
  try {
    if (end.how != TrialEnd::How::kHung) throw Failure("the host ended by itself: " + end.told);
    const std::string cutShort = judgeReports(scene, readJournal(end.told), figures);
    if (!cutShort.empty()) ++figures["reports cut short in their saving"];
    judgeRecovery(scene, cutShort);
    ++figures["killed at a random moment"];
  } catch (const Failure& failure) {
    throw Failure("killed at random moment " + std::to_string(number) + " (" +
                  std::to_string(moment.count()) + " ms): " + failure.what());
  }
}

}  // namespace zt::torture
