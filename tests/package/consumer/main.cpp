// SPDX-License-Identifier: Apache-2.0
// Uses a part of each module, including an exception that the library throws. Prints the content of
// expected.txt.

#include <ztportal/ztportal.h>

#include <iostream>
#include <string>

int main() {
  ZtHost::setBundleInfo({{"CFBundleName", "consumer"}});
  const auto report = ZtPortalData::initWithValues("", false, REP_CUSTOMERID_ZT, "", "1.0");
  const auto pool = report->addPool("CUSTOM", ZtDate());
  pool->addString("RESULT", "OK");
  std::string text;
  pool->addToXml("", text, false);
  std::erase(text, '\r');
  std::cout << text;

  try {
    pool->field(7);
  } catch (const ZtException& error) {
    std::cout << error.what() << '\n';
  }

  const auto request = ZtXMLDocument::parse(report->getSoapString());
  std::cout << request->rootElement()->name().view() << '\n';
  std::cout << ZtHost::bundleInfo("CFBundleName").view() << '\n';
  std::cout << (ZtPortalDef::stringFromDate(ZtDate::now()).isNull() ? "no date" : "a date") << '\n';
}
