// SPDX-License-Identifier: Apache-2.0
// Reports once for each line that it reads, and prints what came of it.

#include <ztportal/ztportal.h>

#include <iostream>
#include <string>

int main() {
  ZtHost::setBundleInfo({{"CFBundleName", "Host"}});
  for (std::string url; std::getline(std::cin, url);) {
    const auto report = ZtPortalData::initWithValues(url, false, REP_CUSTOMERID_ZT, "", "1.0");
    report->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
    std::cout << (report->reportToServer() ? "accepted" : "not accepted") << ", "
              << ZtHost::missingPrograms().size() << " programs missing" << std::endl;
  }
}
