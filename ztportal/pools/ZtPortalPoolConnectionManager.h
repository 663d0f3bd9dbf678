// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/pools/ZtPortalPool.h"

/// The usage of a mobile-broadband connection manager: its device and SIM card, and counters of a
/// period. Pool type "CONNECTIONMANAGER".
///
///     auto usage = document->addPoolConnectionManager(ZtDate::now());
///     usage->setDeviceIMEI("356938035643809");
///     usage->setMobileConnections(12);
///
/// A new pool has empty strings, counters of zero, and no IMEI or IMSI: these two are written
/// "(null)" until they are set. All counters are written, including those that are zero.
class ZT_EXPORT ZtPortalPoolConnectionManager final : public ZtPortalPool {
 public:
  using Networks = std::vector<ZtString>;

  static std::shared_ptr<ZtPortalPoolConnectionManager> initWithValues(const ZtDate& timeStamp);

  ZtPortalPoolConnectionManager(Creation creation, const ZtDate& timeStamp);
  ~ZtPortalPoolConnectionManager() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  /// Starts a new period: sets all counters to zero, the strings to empty, and the networks to
  /// unknown. Deliberately keeps IMEI and IMSI, because device and card stay the same; also keeps
  /// the timestamp and the generic fields.
  void clear();

  ZtString deviceModel() const { return _deviceModel.load(); }
  void setDeviceModel(ZtString value) { _deviceModel.store(std::move(value)); }
  ZtString deviceManufacturer() const { return _deviceManufacturer.load(); }
  void setDeviceManufacturer(ZtString value) { _deviceManufacturer.store(std::move(value)); }
  ZtString deviceIMEI() const { return _deviceIMEI.load(); }
  void setDeviceIMEI(ZtString value) { _deviceIMEI.store(std::move(value)); }
  ZtString simOperator() const { return _simOperator.load(); }
  void setSimOperator(ZtString value) { _simOperator.store(std::move(value)); }
  ZtString simIMSI() const { return _simIMSI.load(); }
  void setSimIMSI(ZtString value) { _simIMSI.store(std::move(value)); }
  ZtString interfaceType() const { return _interfaceType.load(); }
  void setInterfaceType(ZtString value) { _interfaceType.store(std::move(value)); }
  std::int32_t sentSMS() const { return _sentSMS; }
  void setSentSMS(std::int32_t value) { _sentSMS = value; }
  std::int32_t sentSMSWithReport() const { return _sentSMSWithReport; }
  void setSentSMSWithReport(std::int32_t value) { _sentSMSWithReport = value; }
  std::int32_t sentSMSFlash() const { return _sentSMSFlash; }
  void setSentSMSFlash(std::int32_t value) { _sentSMSFlash = value; }
  std::int32_t smsSendErrorCount() const { return _smsSendErrorCount; }
  void setSmsSendErrorCount(std::int32_t value) { _smsSendErrorCount = value; }
  std::int32_t receivedSMS() const { return _receivedSMS; }
  void setReceivedSMS(std::int32_t value) { _receivedSMS = value; }
  std::int32_t receivedSMSReports() const { return _receivedSMSReports; }
  void setReceivedSMSReports(std::int32_t value) { _receivedSMSReports = value; }
  std::int32_t manualRegistrationsFailed() const { return _manualRegistrationsFailed; }
  void setManualRegistrationsFailed(std::int32_t value) { _manualRegistrationsFailed = value; }
  /// Names of the networks; null if unknown. Not written into reports.
  std::shared_ptr<const Networks> registeredRoamNetworks() const {
    return _registeredRoamNetworks.load();
  }
  void setRegisteredRoamNetworks(std::shared_ptr<const Networks> value) {
    _registeredRoamNetworks.store(std::move(value));
  }
  std::int32_t wifiConnectionsEstablished() const { return _wifiConnectionsEstablished; }
  void setWifiConnectionsEstablished(std::int32_t value) { _wifiConnectionsEstablished = value; }
  std::int32_t profileEdits() const { return _profileEdits; }
  void setProfileEdits(std::int32_t value) { _profileEdits = value; }
  std::int32_t profileCreations() const { return _profileCreations; }
  void setProfileCreations(std::int32_t value) { _profileCreations = value; }
  std::int32_t profileDeletions() const { return _profileDeletions; }
  void setProfileDeletions(std::int32_t value) { _profileDeletions = value; }
  std::int32_t mobileConnections() const { return _mobileConnections; }
  void setMobileConnections(std::int32_t value) { _mobileConnections = value; }
  std::int32_t mobileConnectionsFailed() const { return _mobileConnectionsFailed; }
  void setMobileConnectionsFailed(std::int32_t value) { _mobileConnectionsFailed = value; }
  std::int32_t mobileRoamingConnections() const { return _mobileRoamingConnections; }
  void setMobileRoamingConnections(std::int32_t value) { _mobileRoamingConnections = value; }
  std::int32_t mobileRoamingConnectionsFailed() const { return _mobileRoamingConnectionsFailed; }
  void setMobileRoamingConnectionsFailed(std::int32_t value) {
    _mobileRoamingConnectionsFailed = value;
  }
  /// Bytes sent and received. Not written into reports.
  std::int64_t mobileVolumeHome() const { return _mobileVolumeHome; }
  void setMobileVolumeHome(std::int64_t value) { _mobileVolumeHome = value; }
  std::int64_t mobileVolumeRoaming() const { return _mobileVolumeRoaming; }
  void setMobileVolumeRoaming(std::int64_t value) { _mobileVolumeRoaming = value; }
  std::int32_t recognizedAltConnections() const { return _recognizedAltConnections; }
  void setRecognizedAltConnections(std::int32_t value) { _recognizedAltConnections = value; }
  std::int32_t autoSwitchesToAltConnection() const { return _autoSwitchesToAltConnection; }
  void setAutoSwitchesToAltConnection(std::int32_t value) { _autoSwitchesToAltConnection = value; }
  std::int32_t manualSwitchesToAltConnection() const { return _manualSwitchesToAltConnection; }
  void setManualSwitchesToAltConnection(std::int32_t value) {
    _manualSwitchesToAltConnection = value;
  }

 private:
  friend struct zt::Fields<ZtPortalPoolConnectionManager>;

  ZtAtomic<ZtString> _deviceModel;
  ZtAtomic<ZtString> _deviceManufacturer;
  ZtAtomic<ZtString> _deviceIMEI;
  ZtAtomic<ZtString> _simOperator;
  ZtAtomic<ZtString> _simIMSI;
  ZtAtomic<ZtString> _interfaceType;
  std::int32_t _sentSMS = 0;
  std::int32_t _sentSMSWithReport = 0;
  std::int32_t _sentSMSFlash = 0;
  std::int32_t _smsSendErrorCount = 0;
  std::int32_t _receivedSMS = 0;
  std::int32_t _receivedSMSReports = 0;
  std::int32_t _manualRegistrationsFailed = 0;
  ZtAtomic<std::shared_ptr<const Networks>> _registeredRoamNetworks;
  std::int32_t _wifiConnectionsEstablished = 0;
  std::int32_t _profileEdits = 0;
  std::int32_t _profileCreations = 0;
  std::int32_t _profileDeletions = 0;
  std::int32_t _mobileConnections = 0;
  std::int32_t _mobileConnectionsFailed = 0;
  std::int32_t _mobileRoamingConnections = 0;
  std::int32_t _mobileRoamingConnectionsFailed = 0;
  std::int64_t _mobileVolumeHome = 0;
  std::int64_t _mobileVolumeRoaming = 0;
  std::int32_t _recognizedAltConnections = 0;
  std::int32_t _autoSwitchesToAltConnection = 0;
  std::int32_t _manualSwitchesToAltConnection = 0;
};
