// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/soap/Intake.h"

namespace zt::inbox {

/// The reporting service: responds to version requests, receives reports and misbehaves on purpose.
class SoapService {
 public:
  /// `intake` outlives the service.
  explicit SoapService(Intake& intake) : _intake(intake) {}

  /// `test`: the request was posted to the test address.
  void respond(Exchange& exchange, bool test);

 private:
  Intake& _intake;
};

}  // namespace zt::inbox
