#include "ztportal/pools/ZtPortalPoolComputerSystem.h"

#include "ztportal/base/ZtException.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/WritePool.h"

namespace {

/// Adds a record of its class to a list; `prepare` completes it first.
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
    : ZtPortalPool(creation, "COMPUTER_SYSTEM", timeStamp) {
  if (autoCheck) checkComputerSystem();
}

ZtPortalPoolComputerSystem::~ZtPortalPoolComputerSystem() = default;

void ZtPortalPoolComputerSystem::addToXml(const ZtString& prefix, std::string& xml,
                                          bool soap) const {
  zt::writePool(*this, prefix, xml, soap, [this](zt::PoolWriter& pool) {
    pool.string("OS_NAME", _osName);
    pool.string("OS_VERSION", _osVersion);
    pool.integer("OS_SERVICEPACK", _servicePack);
    pool.string("OS_LANGUAGE", zt::languageName(_osLanguage).view());
    pool.string("USER_LANGUAGE", zt::languageName(_userLanguage).view());
    pool.boolean("USER_ISADMIN", _isAdmin);
    pool.records("BROWSERS", browsers());
    pool.records("EMAILCLIENTS", emailClients());
    pool.boolean("WINDOWS_FIREWALL_ENABLED", 0);
    pool.records("FIREWALLAPPS", firewallApps());
    pool.records("ANTIVIRUSAPP", antivirusApps());
  });
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
