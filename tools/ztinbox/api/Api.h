// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/store/ReportStore.h"

namespace zt::inbox {

/// The description of the JSON API (OpenAPI 3.1): the text of openapi.json.
extern const std::string_view kOpenApi;

/// The JSON API below /api/v1/, described in openapi.json. Errors are problem
/// documents (RFC 9457).
///
///     GET    reports?FILTER&before=&limit=      newest first
///     DELETE reports?FILTER&before=             {"deleted":3}
///     PUT    reports/read?FILTER&before=        {"read":true}: marks the selected reports
///     GET    reports/N                          one report with its headers, pools and fields
///     DELETE reports/N
///     GET    reports/N/raw                      its bytes
///     PUT    reports/N/read                     {"read":true}
///     GET    events?after=                      server-sent events, one for each new report
///     GET    wait?count=&timeout=               {"count":2} once there are that many, else 408
///     GET    stats?FILTER                       the data of the charts
///     GET    behaviour, PUT behaviour           how reports are answered
///     GET    openapi.json
///
/// FILTER: customer, application, machine, pool, text, test, read, since, until.
class Api {
 public:
  /// `store` and `behaviour` outlive the API.
  Api(ReportStore& store, Behaviour& behaviour) : _store(store), _behaviour(behaviour) {}

  static bool owns(std::string_view path);
  /// Whether requests for `path` wait for reports.
  static bool waits(std::string_view path);
  void respond(Exchange& exchange);

 private:
  void dispatch(Exchange& exchange, std::string_view path);
  void reports(Exchange& exchange);
  void oneReport(Exchange& exchange, std::string_view path);
  void showReport(Exchange& exchange, std::uint64_t number);
  void removeReport(Exchange& exchange, std::uint64_t number);
  void showRaw(Exchange& exchange, std::uint64_t number);
  void markOne(Exchange& exchange, std::uint64_t number);
  void markAll(Exchange& exchange);
  void streamEvents(Exchange& exchange);
  void wait(Exchange& exchange);
  void showStatistics(Exchange& exchange);
  void behaviour(Exchange& exchange);

  ReportStore& _store;
  Behaviour& _behaviour;
};

}  // namespace zt::inbox
