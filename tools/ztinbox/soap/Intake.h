// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>
#include <string_view>

#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// The request that contains a report.
struct ReportRequest {
  std::string_view body;
  std::string_view head;  ///< request line and headers
  std::string sender;     ///< address and port
  bool test = false;      ///< was posted to the test address
};

/// Receives reports: decides how each is answered, and stores it. Simultaneous reports get their
/// numbers and their steps of the scenario in the same order.
class Intake {
 public:
  /// `behaviour` and `store` outlive the intake.
  Intake(Behaviour& behaviour, ReportStore& store) : _behaviour(behaviour), _store(store) {}

  /// Stores the report. Throws StoreFault if it cannot be stored; then it must not be
  /// acknowledged. Thread-safe.
  Reaction receive(const ReportRequest& request);

 private:
  Behaviour& _behaviour;
  ReportStore& _store;
  std::mutex _order;
};

}  // namespace zt::inbox
