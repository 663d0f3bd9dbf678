// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/PoolWriter.h"

namespace {

/// Creates a record, completes it with `prepare`, and adds it to the list.
template <class Record, class Prepare>
std::shared_ptr<Record> addRecord(const std::shared_ptr<std::vector<std::shared_ptr<Record>>>& list,
                                  const ZtString& name, const ZtString& version,
                                  Prepare prepare) try {
  if (list == nullptr) return nullptr;
  auto record = Record::initWithNameAndVersion(name, version);
  prepare(*record);
  list->push_back(record);
  return record;
} catch (const ZtException&) {
  return nullptr;
}

constexpr auto kAsItIs = [](const auto&) {};

}  // namespace

std::shared_ptr<ZtPortalPoolComputerSystem> ZtPortalPoolComputerSystem::initWithValues(
    const ZtDate& timeStamp, bool autoCheck) {
  return std::make_shared<ZtPortalPoolComputerSystem>(Creation{}, timeStamp, autoCheck);
}

ZtPortalPoolComputerSystem::ZtPortalPoolComputerSystem(Creation creation, const ZtDate& timeStamp,
                                                       bool autoCheck)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolComputerSystem>::kType, timeStamp) {
  if (autoCheck) checkComputerSystem();
}

ZtPortalPoolComputerSystem::~ZtPortalPoolComputerSystem() = default;

void ZtPortalPoolComputerSystem::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
}

std::shared_ptr<ZtPortalPoolBrowser> ZtPortalPoolComputerSystem::addBrowser(const ZtString& name,
                                                                            const ZtString& version,
                                                                            ZtBOOL isStandard) {
  return addRecord(browsers(), name, version,
                   [isStandard](auto& record) { record.setIsStandard(isStandard); });
}

std::shared_ptr<ZtPortalPoolEMailClient> ZtPortalPoolComputerSystem::addEMailClient(
    const ZtString& name, const ZtString& version, ZtBOOL isStandard) {
  return addRecord(emailClients(), name, version,
                   [isStandard](auto& record) { record.setIsStandard(isStandard); });
}

std::shared_ptr<ZtPortalPoolAntivirusApp> ZtPortalPoolComputerSystem::addAntivirusApp(
    const ZtString& name, const ZtString& version) {
  return addRecord(antivirusApps(), name, version, kAsItIs);
}

std::shared_ptr<ZtPortalPoolFirewallApp> ZtPortalPoolComputerSystem::addFirewallApp(
    const ZtString& name, const ZtString& version) {
  return addRecord(firewallApps(), name, version, kAsItIs);
}

std::shared_ptr<ZtPortalPoolBrowser> ZtPortalPoolBrowser::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolBrowser>(Creation{}, name, version);
}

ZtPortalPoolBrowser::ZtPortalPoolBrowser(Creation /*creation*/, ZtString name, ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolBrowser::~ZtPortalPoolBrowser() = default;

std::shared_ptr<ZtPortalPoolEMailClient> ZtPortalPoolEMailClient::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolEMailClient>(Creation{}, name, version);
}

ZtPortalPoolEMailClient::ZtPortalPoolEMailClient(Creation /*creation*/, ZtString name,
                                                 ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolEMailClient::~ZtPortalPoolEMailClient() = default;

std::shared_ptr<ZtPortalPoolFirewallApp> ZtPortalPoolFirewallApp::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolFirewallApp>(Creation{}, name, version);
}

ZtPortalPoolFirewallApp::ZtPortalPoolFirewallApp(Creation /*creation*/, ZtString name,
                                                 ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolFirewallApp::~ZtPortalPoolFirewallApp() = default;

std::shared_ptr<ZtPortalPoolAntivirusApp> ZtPortalPoolAntivirusApp::initWithNameAndVersion(
    const ZtString& name, const ZtString& version) {
  return std::make_shared<ZtPortalPoolAntivirusApp>(Creation{}, name, version);
}

ZtPortalPoolAntivirusApp::ZtPortalPoolAntivirusApp(Creation /*creation*/, ZtString name,
                                                   ZtString version)
    : _appName(std::move(name)), _appVersion(std::move(version)) {}

ZtPortalPoolAntivirusApp::~ZtPortalPoolAntivirusApp() = default;
