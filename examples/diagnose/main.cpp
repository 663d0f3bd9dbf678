// SPDX-License-Identifier: Apache-2.0
// diagnose [CONFIGURATION-URL]: checks the machine, repairs what it can, and reports both. Exit
// status: 0 if the server accepted the report, 1 if it was saved instead.

#include <ztportal/ztportal.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>

namespace {

namespace fs = std::filesystem;

struct Finding {
  std::string message;
  bool good;
};

/// Looks for a default route in the kernel's table of IPv4 routes: destination 00000000.
Finding defaultRoute() {
  std::ifstream routes("/proc/net/route");
  std::string interface;
  std::string destination;
  std::string rest;
  while (routes >> interface >> destination && std::getline(routes, rest)) {
    if (destination == "00000000") return {"default route through " + interface, true};
  }
  return {"no default route", false};
}

Finding freeSpace() {
  std::error_code error;
  const fs::space_info space = fs::space(fs::temp_directory_path(), error);
  if (error) return {error.message(), false};
  return {std::to_string(space.available >> 20U) + " MiB free", space.available >> 20U >= 100};
}

/// The folder of saved reports. reportFolder() creates it if it is missing, which is the repair.
Finding reportFolder() {
  const ZtString folder = ZtPortalData::reportFolder();
  return folder.isNull() ? Finding{"reports cannot be saved", false}
                         : Finding{"reports are saved in " + std::string(folder.view()), true};
}

void addStep(ZtPortalPoolDiagnose& diagnose, const ZtString& name, ZtPortalDiagnoseType type,
             const Finding& finding) {
  const auto step = diagnose.addStep(ZtDate::now(), name, type);
  step->setStepMessageString(finding.message);
  step->setStepMessageCode(finding.good ? "0" : "1");
  step->setSuccessfullRepair(finding.good ? 1 : 0);
  std::cout << (finding.good ? "ok      " : "problem ") << name.view() << ": " << finding.message
            << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  ZtHost::setBundleInfo(
      {{"CFBundleName", "Example Diagnose"}, {"CFBundleShortVersionString", "1.4"}});

  const auto report =
      ZtPortalData::initWithValues(argc > 1 ? ZtString(argv[1]) : REP_URL_ZT, false,
                                   REP_CUSTOMERID_ZT, REP_APPID_ZT_REPAIRTOOL, "1.4");
  const auto diagnose = report->addPoolDiagnose(ZtDate::now());
  addStep(*diagnose, "Route", ZtPortalDiagnoseManual, defaultRoute());
  addStep(*diagnose, "Disk", ZtPortalDiagnoseManual, freeSpace());
  addStep(*diagnose, "Report folder", ZtPortalDiagnoseAutomatic, reportFolder());

  const bool accepted = report->reportToServer();
  std::cout << (accepted ? "The server accepted the report.\n"
                         : "The server did not accept the report; it is saved.\n");
  return accepted ? 0 : 1;
}
