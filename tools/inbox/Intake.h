#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "tools/inbox/Behaviour.h"
#include "tools/inbox/ReportStore.h"

namespace zt::inbox {

/// Takes one line of text, without its line end.
using LineSink = std::function<void(std::string_view)>;

/// Takes reports in: decides what is answered, keeps the report, writes its line. Reports that
/// come at the same time get their numbers, steps of the scenario and lines in one order.
class Intake {
 public:
  /// `behaviour` and `store` outlive the intake.
  Intake(Behaviour& behaviour, ReportStore& store, LineSink lines);

  /// Once it returns, the report is kept and its line is written. Any thread may call it.
  Reaction receive(std::string_view body, bool test);

 private:
  Behaviour& _behaviour;
  ReportStore& _store;
  LineSink _lines;
  std::mutex _order;
};

}  // namespace zt::inbox
