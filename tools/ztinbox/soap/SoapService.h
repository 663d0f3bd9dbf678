#pragma once

#include "tools/ztinbox/http/HttpServer.h"
#include "tools/ztinbox/soap/Intake.h"

namespace zt::inbox {

/// The reporting service: answers version requests, takes reports and misbehaves as it is told.
class SoapService {
 public:
  /// `intake` outlives the service.
  explicit SoapService(Intake& intake) : _intake(intake) {}

  void answer(Exchange& exchange, bool test);

 private:
  Intake& _intake;
};

}  // namespace zt::inbox
