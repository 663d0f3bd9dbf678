// SPDX-License-Identifier: Apache-2.0
// connection-manager [CONFIGURATION-URL]: counts the usage in two periods and reports each of them.
// Exit status: 0 if the server accepted both reports, 1 if at least one was saved instead.

#include <ztportal/ztportal.h>

#include <iostream>

namespace {

using Usage = ZtPortalPoolConnectionManager;

void connected(Usage& counters) {
  counters.setDeviceModel("E220");
  counters.setInterfaceType("UMTS");
  counters.setMobileConnections(counters.mobileConnections() + 1);
}

void messageSent(Usage& counters) { counters.setSentSMS(counters.sentSMS() + 1); }

/// Sends a separate report for every period, because each is accepted or saved under its own ID.
bool reportPeriod(const ZtString& configurationUrl, const Usage& counters) {
  const auto report = ZtPortalData::initWithValues(configurationUrl, false, REP_CUSTOMERID_ZT,
                                                   REP_APPID_ZT_CONNECTIONMANAGER, "3.0");
  const auto usage = report->addPoolConnectionManager(ZtDate::now());
  usage->setDeviceModel(counters.deviceModel());
  usage->setDeviceIMEI(counters.deviceIMEI());
  usage->setSimIMSI(counters.simIMSI());
  usage->setInterfaceType(counters.interfaceType());
  usage->setMobileConnections(counters.mobileConnections());
  usage->setSentSMS(counters.sentSMS());

  const bool accepted = report->reportToServer();
  std::cout << "Connections: " << counters.mobileConnections()
            << ", messages: " << counters.sentSMS() << ". "
            << (accepted ? "The server accepted the report.\n"
                         : "The server did not accept the report; it is saved.\n");
  return accepted;
}

}  // namespace

int main(int argc, char** argv) {
  ZtHost::setBundleInfo(
      {{"CFBundleName", "Example Connection Manager"}, {"CFBundleShortVersionString", "3.0"}});
  const ZtString configurationUrl = argc > 1 ? ZtString(argv[1]) : REP_URL_ZT;

  // The counters live as long as the program. Device and card are set only once.
  const auto counters = Usage::initWithValues(ZtDate::now());
  counters->setDeviceIMEI("356938035643809");
  counters->setSimIMSI("262011234567890");

  connected(*counters);
  connected(*counters);
  messageSent(*counters);
  const bool firstAccepted = reportPeriod(configurationUrl, *counters);

  counters->clear();  // keeps IMEI and IMSI
  connected(*counters);
  const bool secondAccepted = reportPeriod(configurationUrl, *counters);

  return firstAccepted && secondAccepted ? 0 : 1;
}
