// SPDX-License-Identifier: Apache-2.0
#include "tests/support/PatientPlatform.h"
#include "ztportal/ztportal.h"

// BundledHost CONFIGURATION-URL: a host that is identified by its bundle, not by ZtHost. Sends one
// report. Exit status: 0 if it was accepted.

int main(int count, char** arguments) {
  if (count != 2) return 2;
  const zt::test::PatientPlatform platform;
  const auto report = ZtPortalData::initWithValues(
      arguments[1], false, "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
  report->addPoolExecution(ZtDate::now())->setStartPoint("setup");
  return report->reportToServer() ? 0 : 1;
}
