// SPDX-License-Identifier: Apache-2.0
// installer [CUSTOMER]: an installation that reports its run. Exit status: 0 if the server accepted
// the report, 1 if it was saved instead, 2 if there is no such customer.

#include <ztportal/report/ZtReport.h>
#include <ztportal/system/ZtHost.h>

#include <filesystem>
#include <iostream>
#include <iterator>
#include <system_error>

namespace {

/// Installs nothing, but reports the steps that an installer would.
void install(ZtReport& report) {
  const auto run = report.poolExecution();
  run->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter);
  const auto copied = run->addStep(ZtDate::now(), "Copy", ZtPortalStepLeave);
  copied->setStepMessageString("42 files");
  copied->setStepMessageCode("0");

  (*report.installDataString())["EDITION"] = "Home";
  (*report.installDataBOOL())["DESKTOP_ICON"] = "yes";
  run->setEndResultString("installed");
  run->setEndResultCode("0");
}

long savedReports() {
  std::error_code error;
  const std::filesystem::directory_iterator files(ZtPortalData::reportFolder().view(), error);
  return error ? 0 : std::distance(begin(files), end(files));
}

}  // namespace

int main(int argc, char** argv) {
  ZtHost::setBundleInfo({{"CFBundleName", "Example Installer"},
                         {"CFBundleShortVersionString", "2.1"},
                         {"CFBundleVersion", "77"}});

  const ZtString customer = argc > 1 ? ZtString(argv[1]) : REP_CUSTOMERID_ZT;
  const auto report = ZtReport::initWithCustomerAndGuid(customer, nullptr);
  if (!report) {
    std::cerr << "installer: there is no customer \"" << customer.view() << "\"\n";
    return 2;
  }

  report->startReport("setup");
  install(*report);
  report->stopReport("finish");

  const bool accepted = report->sendReport(true);
  if (!accepted) {
    const ZtString file = report->data()->reportFile();
    const bool saved = !file.isNull() && std::filesystem::exists(file.view());
    std::cout << "The server did not accept the report. "
              << (saved ? "It is saved as\n  " : "It could not be saved either.")
              << (saved ? file.view() : "") << '\n';
    return 1;
  }
  std::cout << "The server accepted the report.\n";

  // The server can be reached, so try to send the reports of earlier runs.
  const long waiting = savedReports();
  report->sendSavedReports();
  const long left = savedReports();
  std::cout << "Saved reports of earlier runs: " << waiting - left << " sent, " << left
            << " left.\n";
  return 0;
}
