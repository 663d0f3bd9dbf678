// SPDX-License-Identifier: Apache-2.0
#include <ztportal/ztportal.h>

// A small host: sends one report with one pool to the server that the configuration document at
// argv[1] names.

int main(int count, char** words) {
  if (count != 2) return 2;
  ZtHost::setBundleInfo({{"CFBundleName", "First"}, {"CFBundleShortVersionString", "1.0"}});
  const auto report = ZtPortalData::initWithValues(words[1], false, "Kelvane",
                                                   "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "1.0");
  report->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
  return report->reportToServer() ? 0 : 1;
}
