#pragma once

#include <string_view>

#include "tools/inbox/Behaviour.h"
#include "tools/inbox/HttpServer.h"
#include "tools/inbox/ReportStore.h"

namespace zt::inbox {

/// The JSON API below /api/v1/. Errors are JSON too: {"error":"no such report"}.
///
///     GET    reports?limit=&before=&customer=   newest first
///     GET    reports/N                          one report
///     GET    reports/N/raw                      its bytes
///     DELETE reports[/N]                        {"deleted":1}
///     GET    wait?count=&timeout=               {"count":2} once so many came in, else 408
///     GET    behaviour, PUT behaviour           how reports are answered
class Api {
 public:
  /// `store` and `behaviour` outlive the API.
  Api(ReportStore& store, Behaviour& behaviour) : _store(store), _behaviour(behaviour) {}

  static bool owns(std::string_view path);
  void answer(Exchange& exchange);

 private:
  void answerReports(Exchange& exchange);
  void answerReport(Exchange& exchange, std::string_view text, bool raw);
  void answerWait(Exchange& exchange);
  void answerBehaviour(Exchange& exchange);

  ReportStore& _store;
  Behaviour& _behaviour;
};

}  // namespace zt::inbox
