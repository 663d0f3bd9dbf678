// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/Reports.h"

#include <stdlib.h>

#include <cstdint>

namespace zt::bench {

namespace {

void addInventory(ZtPortalData& report) {
  const auto computer = report.addPoolComputerSystemWithAutoCheck(stepTime(0), false);
  computer->setOsName("MACOS");
  computer->setOsVersion("MACOS 12.11");
  computer->setOsLanguage(ZtLanguageGerman);
  computer->setUserLanguage(ZtLanguageGerman);
  computer->addEMailClient("Thunderbird E-Mail", "128.5.0", 1);
  computer->addBrowser("Firefox ESR", "128.5.0", 1);
  computer->addBrowser("Chromium Web Browser", "131.0", 0);
}

}  // namespace

ZtDate stepTime(std::size_t step) {
  constexpr std::int64_t kStart = 1795262400000;  // 2026-11-21T12:00:00Z
  return ZtDate::fromMilliseconds(kStart + static_cast<std::int64_t>(step) * 137);
}

void setEnvironment() {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("LC_ALL", "de_DE.UTF-8", 1);
}

std::shared_ptr<ZtPortalData> emptyReport(const std::string& configurationUrl) {
  return ZtPortalData::initWithValues(configurationUrl, false, "Kelvane",
                                      "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
}

std::shared_ptr<ZtPortalData> typicalReport() {
  auto report = emptyReport();
  addInventory(*report);
  const auto run = report->addPoolExecution(stepTime(0));
  run->setStartPoint("setup");
  run->setEndPoint("finish");
  for (std::size_t i = 0; i < 40; ++i) {
    const auto step = run->addStep(stepTime(i), "Copy file " + std::to_string(i),
                                   i % 2 == 0 ? ZtPortalStepEnter : ZtPortalStepLeave);
    step->setStepMessageCode("0");
  }
  for (std::size_t i = 0; i < 30; ++i) {
    run->addString("FACT_" + std::to_string(i), "the value of fact " + std::to_string(i));
  }
  return report;
}

std::shared_ptr<ZtPortalData> reportOfSize(const std::string& configurationUrl, std::size_t bytes) {
  auto report = emptyReport(configurationUrl);
  const auto pool = report->addPool("CUSTOM", stepTime(0));
  const auto add = [&pool] { pool->addString("FACT", "the value of a fact"); };
  add();
  const std::size_t one = report->generateXml(nullptr, true).size();
  add();
  const std::size_t each = report->generateXml(nullptr, true).size() - one;
  for (std::size_t i = 2; one + i * each < bytes; ++i) add();
  return report;
}

}  // namespace zt::bench
