#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// The request with a report.
struct ReportRequest {
  std::string_view body;
  std::string_view head;  ///< request line and headers
  std::string sender;     ///< address and port
  bool test = false;      ///< came to the test address
};

/// Receives reports: decides how each is answered and keeps it. Simultaneous reports are assigned
/// their numbers and their steps of the scenario in the same order.
class Intake {
 public:
  /// `behaviour` and `store` outlive the intake.
  Intake(Behaviour& behaviour, ReportStore& store) : _behaviour(behaviour), _store(store) {}

  /// Once it returns, the report is kept. Throws DatabaseFault if it cannot be kept: then it must
  /// not be acknowledged. Thread-safe.
  Reaction receive(const ReportRequest& request);

 private:
  Behaviour& _behaviour;
  ReportStore& _store;
  std::mutex _order;
};

}  // namespace zt::inbox
