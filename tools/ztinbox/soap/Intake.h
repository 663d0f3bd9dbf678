#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// A report's request.
struct Incoming {
  std::string_view body;
  std::string_view head;  ///< request line and headers
  std::string sender;     ///< address and port
  bool test = false;      ///< came to the test address
};

/// Takes reports in: decides what is answered and keeps the report. Reports that come at the same
/// time get their numbers and their steps of the scenario in one order.
class Intake {
 public:
  /// `behaviour` and `store` outlive the intake.
  Intake(Behaviour& behaviour, ReportStore& store) : _behaviour(behaviour), _store(store) {}

  /// Once it returns, the report is kept. Throws DatabaseFault when it cannot be kept: then
  /// nobody may be told that it was. Any thread may call it.
  Reaction receive(const Incoming& incoming);

 private:
  Behaviour& _behaviour;
  ReportStore& _store;
  std::mutex _order;
};

}  // namespace zt::inbox
