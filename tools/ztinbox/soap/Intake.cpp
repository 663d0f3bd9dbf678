#include "tools/ztinbox/soap/Intake.h"

#include <utility>

#include "tools/ztinbox/store/PackedText.h"

namespace zt::inbox {

namespace {

NewReport newReport(const Incoming& incoming) {
  NewReport report;
  report.read(incoming.body);
  report.report.sender = incoming.sender;
  report.report.test = incoming.test;
  report.head = incoming.head;
  report.packedBody = packed(incoming.body);
  return report;
}

}  // namespace

Reaction Intake::receive(const Incoming& incoming) {
  NewReport report = newReport(incoming);

  const std::lock_guard lock(_order);
  const Reaction reaction = _behaviour.next();
  report.report.answer = reaction.answer;
  report.report.received = std::chrono::system_clock::now();
  _store.add(std::move(report));
  return reaction;
}

}  // namespace zt::inbox
