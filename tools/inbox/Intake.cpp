#include "tools/inbox/Intake.h"

#include <future>
#include <utility>

#include "tools/inbox/ReportContent.h"
#include "tools/inbox/store/PackedText.h"

namespace zt::inbox {

namespace {

NewReport newReport(const Incoming& incoming) {
  ReportContent content = readContent(incoming.body);
  NewReport report;
  report.report.identity = std::move(content.identity);
  report.report.result = std::move(content.result);
  report.report.duration = content.duration;
  report.report.size = incoming.body.size();
  report.report.sender = incoming.sender;
  report.report.test = incoming.test;
  report.head = incoming.head;
  report.packedBody = packed(incoming.body);
  report.steps = std::move(content.steps);
  return report;
}

}  // namespace

Reaction Intake::receive(const Incoming& incoming) {
  NewReport report = newReport(incoming);

  Reaction reaction;
  std::future<void> kept;
  {
    const std::lock_guard lock(_order);
    reaction = _behaviour.next();
    report.report.answer = reaction.answer;
    report.report.received = std::chrono::system_clock::now();
    kept = _store.add(std::move(report));
  }
  kept.get();
  return reaction;
}

}  // namespace zt::inbox
