// SPDX-License-Identifier: Apache-2.0
// privacy yes|no|ask: a host that asks for consent, and reports without the name of the user. Exit
// status: 0 if the server accepted the report, 1 if not, 2 for wrong usage.

#include <ztportal/portal/ZtReportStore.h>
#include <ztportal/report/ZtReport.h>
#include <ztportal/system/ZtHost.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

namespace {

/// Leaves out what tells this computer and this user from others.
ZtDecision anonymous(std::string_view /*poolType*/, std::string_view name, std::string_view value) {
  if (name == "MachineID") return ZtDecision::drop();
  const char* const home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') return ZtDecision::keep();
  const std::size_t at = value.find(home);
  if (at == std::string_view::npos) return ZtDecision::keep();
  return ZtDecision::replace(std::string(value).replace(at, std::string_view(home).size(), "~"));
}

/// A last look: a report that still names the user does not leave the computer.
ZtDecision withoutUser(std::string_view request) {
  const char* const user = std::getenv("USER");
  const bool isNamed = user != nullptr && request.find(user) != std::string_view::npos;
  return isNamed ? ZtDecision::drop() : ZtDecision::keep();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view answer = argc == 2 ? argv[1] : "";
  if (answer != "yes" && answer != "no" && answer != "ask") {
    std::cerr << "usage: privacy yes|no|ask\n";
    return 2;
  }
  ZtHost::setBundleInfo({{"CFBundleName", "Example Privacy"},
                         {"CFBundleShortVersionString", "2.1"},
                         {"CFBundleVersion", "77"}});
  ZtHost::setValueEscaping(true);
  ZtHost::setBroadcastEnabled(false);
  ZtHost::setValueFilter(anonymous);
  ZtHost::setRequestHook(withoutUser);

  if (answer == "yes") ZtHost::setConsent(ZtConsent::Given);
  if (answer == "no") {
    ZtHost::setConsent(ZtConsent::Revoked);
    std::cout << "Deleted " << ZtReportStore().removeAll() << " saved reports.\n";
  }
  if (ZtHost::consent() == ZtConsent::Unset) {
    std::cout << "May this program report its runs? Start it with \"yes\" or \"no\".\n";
    return 1;
  }

  const auto report = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
  if (!report) return 1;
  report->startReport("start");
  if (const char* const home = std::getenv("HOME")) {
    (*report->installDataString())["LOG & FOLDER"] = std::string(home) + "/Documents";
  }
  report->stopReport("end");
  const bool isAccepted = report->sendReport(true);
  std::cout << report->data()->lastDelivery().message << '\n';
  return isAccepted ? 0 : 1;
}
