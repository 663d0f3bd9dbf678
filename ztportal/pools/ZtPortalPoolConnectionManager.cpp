#include "ztportal/pools/ZtPortalPoolConnectionManager.h"

#include "ztportal/pools/WritePool.h"

namespace {
constinit const ZtString kEmpty = ZtString::constant<"">();
}

std::shared_ptr<ZtPortalPoolConnectionManager> ZtPortalPoolConnectionManager::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolConnectionManager>(Creation{}, timeStamp);
}

ZtPortalPoolConnectionManager::ZtPortalPoolConnectionManager(Creation creation,
                                                             const ZtDate& timeStamp)
    : ZtPortalPool(creation, "CONNECTIONMANAGER", timeStamp) {
  clear();
}

ZtPortalPoolConnectionManager::~ZtPortalPoolConnectionManager() = default;

void ZtPortalPoolConnectionManager::addToXml(const ZtString& prefix, std::string& xml,
                                             bool soap) const {
  zt::writePool(*this, prefix, xml, soap, [this](zt::PoolWriter& pool) {
    pool.string("DEVICE_MODEL", _deviceModel);
    pool.string("DEVICE_MANUFACTURER", _deviceManufacturer);
    pool.string("DEVICE_IMEI", _deviceIMEI);
    pool.string("DEVICE_INTERFACE", _interfaceType);
    pool.string("SIM_OPERATOR", _simOperator);
    pool.string("SIM_IMSI", _simIMSI);
    pool.integer("HOME_CONNECTIONS", _mobileConnections);
    pool.integer("HOME_CONNECTIONS_FAILED", _mobileConnectionsFailed);
    pool.integer("ROAMING_CONNECTIONS", _mobileRoamingConnections);
    pool.integer("ROAMING_CONNECTIONS_FAILED", _mobileRoamingConnectionsFailed);
    pool.integer("ALTERNATE_CONNECTIONS_RECOGNIZED", _recognizedAltConnections);
    pool.integer("AUTOMATIC_SWITCHES", _autoSwitchesToAltConnection);
    pool.integer("MANUAL_SWITCHES", _manualSwitchesToAltConnection);
    pool.integer("SMS_SENT", _sentSMS);
    pool.integer("SMS_SENTWITHREPORT", _sentSMSWithReport);
    pool.integer("SMS_FLASH_SENT", _sentSMSFlash);
    pool.integer("SMS_SENDERRORS", _smsSendErrorCount);
    pool.integer("SMS_RECEIVED", _receivedSMS);
    pool.integer("SMS_REPORTS_RECEIVED", _receivedSMSReports);
    pool.integer("MANUAL_REGISTERS_FAILED", _manualRegistrationsFailed);
    pool.integer("WIFI_CONNECTIONS_ESTABLISHED", _wifiConnectionsEstablished);
    pool.integer("PROFILE_EDITS", _profileEdits);
    pool.integer("PROFILE_CREATIONS", _profileCreations);
    pool.integer("PROFILE_DELETIONS", _profileDeletions);
  });
}

void ZtPortalPoolConnectionManager::clear() {
  _registeredRoamNetworks.store(nullptr);
  _deviceModel.store(kEmpty);
  _deviceManufacturer.store(kEmpty);
  _simOperator.store(kEmpty);
  _interfaceType.store(kEmpty);
  _sentSMS = 0;
  _sentSMSWithReport = 0;
  _sentSMSFlash = 0;
  _smsSendErrorCount = 0;
  _receivedSMS = 0;
  _receivedSMSReports = 0;
  _manualRegistrationsFailed = 0;
  _wifiConnectionsEstablished = 0;
  _profileEdits = 0;
  _profileCreations = 0;
  _profileDeletions = 0;
  _mobileConnections = 0;
  _mobileConnectionsFailed = 0;
  _mobileRoamingConnections = 0;
  _mobileRoamingConnectionsFailed = 0;
  _mobileVolumeHome = 0;
  _mobileVolumeRoaming = 0;
  _recognizedAltConnections = 0;
  _autoSwitchesToAltConnection = 0;
  _manualSwitchesToAltConnection = 0;
}
