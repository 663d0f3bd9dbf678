#pragma once

#include "tools/inbox/HttpServer.h"
#include "tools/inbox/Intake.h"

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
