#include "tools/inbox/Intake.h"

#include <utility>

#include "tools/inbox/ReportLine.h"

namespace zt::inbox {

Intake::Intake(Behaviour& behaviour, ReportStore& store, LineSink lines)
    : _behaviour(behaviour), _store(store), _lines(std::move(lines)) {}

Reaction Intake::receive(std::string_view body, bool test) {
  Report report;
  report.identity = readIdentity(body);
  report.body = body;
  report.test = test;

  const std::lock_guard lock(_order);
  const Reaction reaction = _behaviour.next();
  report.answer = reaction.answer;
  report.received = std::chrono::system_clock::now();
  const auto kept = _store.add(std::move(report));
  _lines(reportLine(*kept));
  return reaction;
}

}  // namespace zt::inbox
