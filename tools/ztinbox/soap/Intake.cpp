// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/soap/Intake.h"

#include <utility>

namespace zt::inbox {

Reaction Intake::receive(const ReportRequest& request) {
  IncomingReport incoming;
  incoming.read(request.body);
  incoming.report.sender = request.sender;
  incoming.report.test = request.test;
  incoming.head = request.head;
  incoming.packedBody = packed(request.body);

  std::unique_lock lock(_order);
  const Reaction reaction = _behaviour.next();
  incoming.report.answer = reaction.answer;
  incoming.report.received = std::chrono::system_clock::now();
  std::future<void> stored = _store.add(std::move(incoming));
  lock.unlock();
  stored.get();
  return reaction;
}

}  // namespace zt::inbox
