#include "tests/faults/Operations.h"

#include <array>
#include <cstddef>

#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/ServerRecords.h"

namespace zt::torture {

namespace {

constexpr const char* kNoServer = "";
constexpr std::size_t kAll = 3;
constexpr const char* kRefuses = "refuse";
constexpr const char* kAccepts = "accept";

constexpr std::array<Operation, 8> kOperations{{
    {"send, accepted", Purpose::kSend, kAccepts, true},
    {"send, refused", Purpose::kSend, kRefuses, true},
    {"send, refused, without a store", Purpose::kSend, kRefuses, false},
    {"save", Purpose::kSave, kAccepts, true},
    {"save without a store", Purpose::kSave, kAccepts, false},
    {"save again", Purpose::kSaveAgain, kAccepts, true},
    {"resend", Purpose::kResend, kAccepts, true},
    {"probe", Purpose::kProbe, kAccepts, true},
}};

bool isReport(const std::string& name) { return name.ends_with(".ztr"); }

bool isWithServer(Scene& scene, const std::string& id, const std::string& text) {
  for (const ServerRecord& record : newestRecordsOf(scene.inbox(), id)) {
    if (record.accepted && record.text == text) return true;
  }
  return false;
}

/// All that is in the store but the file `own` is as it was.
void judgeOthers(const FolderContent& before, FolderContent after, const std::string& own) {
  after.erase(own);
  if (after == before) return;
  for (const auto& [name, content] : before) {
    if (!after.contains(name)) throw Failure("another file of the store is gone: " + name);
    if (after[name] != content) throw Failure("another file of the store was changed: " + name);
  }
  throw Failure("the store has a file too many");
}

void judgeReport(const Operation& operation, Scene& scene, const Attempt& attempt,
                 const Expectation& expectation) {
  const std::string name = fileNameOf(*attempt.document);
  const std::string text = attempt.document->getSoapString();
  FolderContent after = scene.stored();
  const bool isStored = after.contains(name);
  if (isStored && after[name] != text) throw Failure("the report in the store is not as written");
  judgeOthers(attempt.before, after, name);

  const bool takes = operation.purpose == Purpose::kSend && operation.answer == kAccepts;
  if (expectation.undisturbed && attempt.accepted != takes) throw Failure("not the usual result");
  if (attempt.accepted && isStored) throw Failure("confirmed, and in the store all the same");
  if (attempt.accepted && !isWithServer(scene, textOf(attempt.document->reportId()), text)) {
    throw Failure("confirmed, but the server does not have it");
  }
  if (!attempt.accepted && !isStored && !expectation.mayLose) {
    throw Failure("lost: neither confirmed nor in the store");
  }
}

void judgeProbe(const Attempt& attempt, const Expectation& expectation) {
  const std::string text = attempt.document->getSoapString();
  const bool isComplete = text.find(">Firefox<") != std::string::npos;
  if (expectation.undisturbed && !isComplete) throw Failure("the probe misses the browser");
  if (attempt.document->pools().size() != 1) throw Failure("the probe gave no pool");
  if (!text.ends_with("</SOAP-ENV:Envelope>\r\n")) throw Failure("the probe's text is cut short");
}

}  // namespace

std::span<const Operation> operations() { return kOperations; }

void Operation::prepare(Scene& scene, Attempt& attempt) const {
  scene.inbox().behave(std::string(R"({"answer": ")") + answer + "\"}");
  if (purpose == Purpose::kResend) scene.inbox().clear();
  if (storeExists) {
    scene.fillStore(kAll);
  } else {
    scene.clear();
  }
  attempt.before = scene.stored();
}

void Operation::make(const Scene& scene, Attempt& attempt) const {
  const bool asks = purpose == Purpose::kSend || purpose == Purpose::kResend;
  attempt.document = makeDocument(asks ? scene.configurationUrl() : kNoServer);
  if (purpose == Purpose::kResend || purpose == Purpose::kProbe) return;
  Random random(1, 0);
  fill(*attempt.document, random);
  if (purpose == Purpose::kSaveAgain) attempt.document->saveReport();
}

void Operation::act(Attempt& attempt) const {
  switch (purpose) {
    case Purpose::kSend:
      attempt.accepted = attempt.document->reportToServer();
      return;
    case Purpose::kSave:
    case Purpose::kSaveAgain:
      attempt.document->saveReport();
      return;
    case Purpose::kResend:
      attempt.document->sendSavedReports();
      return;
    case Purpose::kProbe:
      attempt.document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
      return;
  }
}

void judgeResent(Scene& scene, const FolderContent& before) {
  const FolderContent after = scene.stored();
  for (const auto& [name, content] : after) {
    if (!before.contains(name)) throw Failure("the store has a file too many: " + name);
  }
  for (const auto& [name, content] : before) {
    const auto left = after.find(name);
    if (left != after.end() && left->second != content) {
      throw Failure("a file of the store was changed: " + name);
    }
    if (left != after.end()) continue;
    const std::string id = name.substr(0, name.rfind('.'));
    if (!isReport(name) || !isWithServer(scene, id, resentText(content.value_or("")))) {
      throw Failure("lost: neither in the store nor with the server: " + name);
    }
  }
}

void judge(const Operation& operation, Scene& scene, const Attempt& attempt,
           const Expectation& expectation) {
  switch (operation.purpose) {
    case Purpose::kSend:
    case Purpose::kSave:
    case Purpose::kSaveAgain:
      return judgeReport(operation, scene, attempt, expectation);
    case Purpose::kResend:
      judgeResent(scene, attempt.before);
      if (expectation.undisturbed && scene.stored().size() != 1) {
        throw Failure("the server takes all, and some stay stored");
      }
      return;
    case Purpose::kProbe:
      return judgeProbe(attempt, expectation);
  }
}

}  // namespace zt::torture
