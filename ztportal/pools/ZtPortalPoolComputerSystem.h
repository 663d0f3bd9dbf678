// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/pools/ZtLanguage.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolAntivirusApp.h"
#include "ztportal/pools/ZtPortalPoolBrowser.h"
#include "ztportal/pools/ZtPortalPoolEMailClient.h"
#include "ztportal/pools/ZtPortalPoolFirewallApp.h"

/// The inventory of the computer: its operating system, languages, the user's rights, and four
/// lists of applications. Pool type "COMPUTER_SYSTEM".
///
///     auto computer = document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
///     computer->addFirewallApp("firewalld", "1.3.3")->setIsEnabled(1);
///
/// A new pool has empty or missing strings, neutral languages and empty lists.
/// `checkComputerSystem` fills it from the running machine.
class ZT_EXPORT ZtPortalPoolComputerSystem final : public ZtPortalPool {
 public:
  template <class Record>
  using List = std::vector<std::shared_ptr<Record>>;
  using Browsers = List<ZtPortalPoolBrowser>;
  using EMailClients = List<ZtPortalPoolEMailClient>;
  using FirewallApps = List<ZtPortalPoolFirewallApp>;
  using AntivirusApps = List<ZtPortalPoolAntivirusApp>;

  /// With `autoCheck` the pool is filled from the machine immediately.
  static std::shared_ptr<ZtPortalPoolComputerSystem> initWithValues(const ZtDate& timeStamp,
                                                                    bool autoCheck);

  ZtPortalPoolComputerSystem(Creation creation, const ZtDate& timeStamp, bool autoCheck);
  ~ZtPortalPoolComputerSystem() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  /// Fills the pool from the machine: operating system, languages, rights, and the installed
  /// e-mail clients and web browsers of a fixed list, with the user's default ones marked. It runs
  /// subprocesses and waits for them. Applications are added to those already in the lists, so a
  /// second call lists them twice. The first failure ends the check silently; earlier values stay.
  /// Does nothing while the user's consent is revoked (`ZtHost::setConsent`).
  void checkComputerSystem();

  /// Each adds a record at the end of its list and returns it, null if it cannot be added.
  /// Duplicates are kept.
  std::shared_ptr<ZtPortalPoolBrowser> addBrowser(const ZtString& name, const ZtString& version,
                                                  ZtBOOL isStandard);
  std::shared_ptr<ZtPortalPoolEMailClient> addEMailClient(const ZtString& name,
                                                          const ZtString& version,
                                                          ZtBOOL isStandard);
  std::shared_ptr<ZtPortalPoolAntivirusApp> addAntivirusApp(const ZtString& name,
                                                            const ZtString& version);
  std::shared_ptr<ZtPortalPoolFirewallApp> addFirewallApp(const ZtString& name,
                                                          const ZtString& version);

  /// The lists themselves, which the host may change. A list that is set to null counts as empty
  /// and accepts no record.
  std::shared_ptr<Browsers> browsers() const { return _browsers.load(); }
  void setBrowsers(std::shared_ptr<Browsers> value) { _browsers.store(std::move(value)); }
  std::shared_ptr<EMailClients> emailClients() const { return _emailClients.load(); }
  void setEmailClients(std::shared_ptr<EMailClients> value) {
    _emailClients.store(std::move(value));
  }
  std::shared_ptr<FirewallApps> firewallApps() const { return _firewallApps.load(); }
  void setFirewallApps(std::shared_ptr<FirewallApps> value) {
    _firewallApps.store(std::move(value));
  }
  std::shared_ptr<AntivirusApps> antivirusApps() const { return _antivirusApps.load(); }
  void setAntivirusApps(std::shared_ptr<AntivirusApps> value) {
    _antivirusApps.store(std::move(value));
  }
  ZtString osName() const { return _osName.load(); }
  void setOsName(ZtString value) { _osName.store(std::move(value)); }
  std::int32_t servicePack() const { return _servicePack; }
  void setServicePack(std::int32_t value) { _servicePack = value; }
  ZtString osVersion() const { return _osVersion.load(); }
  void setOsVersion(ZtString value) { _osVersion.store(std::move(value)); }
  /// For the host's own use; not written into reports.
  ZtString osBuildString() const { return _osBuildString.load(); }
  void setOsBuildString(ZtString value) { _osBuildString.store(std::move(value)); }
  /// Languages are a `ZtLanguage` or any other number, which is written as an empty value.
  std::uint64_t osLanguage() const { return _osLanguage; }
  void setOsLanguage(std::uint64_t value) { _osLanguage = value; }
  std::uint64_t userLanguage() const { return _userLanguage; }
  void setUserLanguage(std::uint64_t value) { _userLanguage = value; }
  /// For the host's own use. Reports have a field for the firewall of another operating system
  /// instead, which is deliberately always false.
  ZtBOOL firewallEnabled() const { return _firewallEnabled; }
  void setFirewallEnabled(ZtBOOL value) { _firewallEnabled = value; }
  ZtBOOL isAdmin() const { return _isAdmin; }
  void setIsAdmin(ZtBOOL value) { _isAdmin = value; }

 private:
  friend struct zt::Fields<ZtPortalPoolComputerSystem>;
  friend struct ZtTestAccess;
  bool _isCurrentUserAnAdmin() const;
  ZtString _getDefaultBrowserApp() const;
  ZtString _getDefaultEMailClientApp() const;

  ZtAtomic<std::shared_ptr<Browsers>> _browsers{std::make_shared<Browsers>()};
  ZtAtomic<std::shared_ptr<EMailClients>> _emailClients{std::make_shared<EMailClients>()};
  ZtAtomic<std::shared_ptr<FirewallApps>> _firewallApps{std::make_shared<FirewallApps>()};
  ZtAtomic<std::shared_ptr<AntivirusApps>> _antivirusApps{std::make_shared<AntivirusApps>()};
  ZtAtomic<ZtString> _osName{ZtString::constant<"">()};
  std::int32_t _servicePack = 0;
  ZtAtomic<ZtString> _osVersion;
  ZtAtomic<ZtString> _osBuildString;
  std::uint64_t _osLanguage = ZtLanguageNeutral;
  std::uint64_t _userLanguage = ZtLanguageNeutral;
  ZtBOOL _firewallEnabled = 0;
  ZtBOOL _isAdmin = 0;
  std::map<std::string, ZtString> _systemInfos;
};
