// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalPoolConnectionManager.h"

namespace zt::test {
namespace {

using Pool = ZtPortalPoolConnectionManager;

struct Counter {
  const char* name;
  std::int32_t (Pool::*get)() const;
  void (Pool::*set)(std::int32_t);
};

/// The counters in the order in which reports have them.
constexpr std::array<Counter, 18> kCounters{{
    {"HOME_CONNECTIONS", &Pool::mobileConnections, &Pool::setMobileConnections},
    {"HOME_CONNECTIONS_FAILED", &Pool::mobileConnectionsFailed, &Pool::setMobileConnectionsFailed},
    {"ROAMING_CONNECTIONS", &Pool::mobileRoamingConnections, &Pool::setMobileRoamingConnections},
    {"ROAMING_CONNECTIONS_FAILED", &Pool::mobileRoamingConnectionsFailed,
     &Pool::setMobileRoamingConnectionsFailed},
    {"ALTERNATE_CONNECTIONS_RECOGNIZED", &Pool::recognizedAltConnections,
     &Pool::setRecognizedAltConnections},
    {"AUTOMATIC_SWITCHES", &Pool::autoSwitchesToAltConnection,
     &Pool::setAutoSwitchesToAltConnection},
    {"MANUAL_SWITCHES", &Pool::manualSwitchesToAltConnection,
     &Pool::setManualSwitchesToAltConnection},
    {"SMS_SENT", &Pool::sentSMS, &Pool::setSentSMS},
    {"SMS_SENTWITHREPORT", &Pool::sentSMSWithReport, &Pool::setSentSMSWithReport},
    {"SMS_FLASH_SENT", &Pool::sentSMSFlash, &Pool::setSentSMSFlash},
    {"SMS_SENDERRORS", &Pool::smsSendErrorCount, &Pool::setSmsSendErrorCount},
    {"SMS_RECEIVED", &Pool::receivedSMS, &Pool::setReceivedSMS},
    {"SMS_REPORTS_RECEIVED", &Pool::receivedSMSReports, &Pool::setReceivedSMSReports},
    {"MANUAL_REGISTERS_FAILED", &Pool::manualRegistrationsFailed,
     &Pool::setManualRegistrationsFailed},
    {"WIFI_CONNECTIONS_ESTABLISHED", &Pool::wifiConnectionsEstablished,
     &Pool::setWifiConnectionsEstablished},
    {"PROFILE_EDITS", &Pool::profileEdits, &Pool::setProfileEdits},
    {"PROFILE_CREATIONS", &Pool::profileCreations, &Pool::setProfileCreations},
    {"PROFILE_DELETIONS", &Pool::profileDeletions, &Pool::setProfileDeletions},
}};

struct Device {
  const char* model = "";
  const char* manufacturer = "";
  const char* imei = "(null)";
  const char* interface = "";
  const char* simOperator = "";
  const char* imsi = "(null)";
};

class ZtPortalPoolConnectionManagerTest : public PoolsFixture {
 protected:
  /// The device, the counters and what follows them; `value` returns that of each counter.
  template <class Value>
  static std::string expected(bool soap, const Device& device, Value value,
                              const std::string& more = "") {
    std::string outline = std::string("string DEVICE_MODEL = ") + device.model +
                          "\nstring DEVICE_MANUFACTURER = " + device.manufacturer +
                          "\nstring DEVICE_IMEI = " + device.imei +
                          "\nstring DEVICE_INTERFACE = " + device.interface +
                          "\nstring SIM_OPERATOR = " + device.simOperator +
                          "\nstring SIM_IMSI = " + device.imsi + "\n";
    for (std::size_t index = 0; index < kCounters.size(); ++index) {
      outline.append("integer ").append(kCounters[index].name).append(" = ");
      outline.append(value(index)).append("\n");
    }
    return poolText("CONNECTIONMANAGER", outline + more, soap);
  }
  static std::string zero(std::size_t /*index*/) { return "0"; }

  void setEveryText() {
    _pool->setDeviceModel("E3372");
    _pool->setDeviceManufacturer("Example");
    _pool->setDeviceIMEI("356938035643809");
    _pool->setInterfaceType("USB");
    _pool->setSimOperator("Operator & Co");
    _pool->setSimIMSI("262011234567890");
  }

  std::shared_ptr<Pool> _pool = Pool::initWithValues(kNoon);
};

TEST_F(ZtPortalPoolConnectionManagerTest, ANewPoolWritesEmptyTextsNoImeiNoImsiAndZeros) {
  EXPECT_EQ(written(*_pool, "", true), expected(true, {}, zero));
  EXPECT_EQ(written(*_pool, "", false), expected(false, {}, zero));
}

TEST_F(ZtPortalPoolConnectionManagerTest, EveryCounterHasItsFieldInItsPlaceAndGenericFieldsFollow) {
  for (std::size_t index = 0; index < kCounters.size(); ++index) {
    ((*_pool).*kCounters[index].set)(static_cast<std::int32_t>(index) + 100);
    EXPECT_EQ(((*_pool).*kCounters[index].get)(), static_cast<std::int32_t>(index) + 100);
  }
  _pool->addBOOL("PREPAID", 1);
  const auto value = [](std::size_t index) { return std::to_string(index + 100); };
  for (const bool soap : {true, false}) {
    EXPECT_EQ(written(*_pool, "", soap), expected(soap, {}, value, "boolean PREPAID = TRUE"));
  }
}

TEST_F(ZtPortalPoolConnectionManagerTest, EveryTextHasItsFieldInItsPlace) {
  setEveryText();
  const Device device{"E3372", "Example",       "356938035643809",
                      "USB",   "Operator & Co", "262011234567890"};
  EXPECT_EQ(written(*_pool, "", false), expected(false, device, zero));
}

TEST_F(ZtPortalPoolConnectionManagerTest, ImeiAndImsiSurviveAClearThatResetsTheRest) {
  setEveryText();
  for (const Counter& counter : kCounters) ((*_pool).*counter.set)(7);
  _pool->setMobileVolumeHome(1);
  _pool->setMobileVolumeRoaming(2);
  _pool->setRegisteredRoamNetworks(std::make_shared<const Pool::Networks>(1, "Network"));
  _pool->addString("KEPT", "yes");

  _pool->clear();

  Device device;
  device.imei = "356938035643809";
  device.imsi = "262011234567890";
  EXPECT_EQ(written(*_pool, "", false), expected(false, device, zero, "string KEPT = yes"));
  EXPECT_EQ(_pool->mobileVolumeHome(), 0);
  EXPECT_EQ(_pool->mobileVolumeRoaming(), 0);
  EXPECT_EQ(_pool->registeredRoamNetworks(), nullptr);
  EXPECT_EQ(_pool->timeStamp(), kNoon);
}

TEST_F(ZtPortalPoolConnectionManagerTest, VolumesAndRoamingNetworksAreKeptButNotWritten) {
  constexpr std::int64_t kMuch = std::numeric_limits<std::int64_t>::max();
  const auto networks =
      std::make_shared<const Pool::Networks>(Pool::Networks{"Network A", nullptr});
  _pool->setMobileVolumeHome(kMuch);
  _pool->setMobileVolumeRoaming(-kMuch);
  _pool->setRegisteredRoamNetworks(networks);
  EXPECT_EQ(_pool->mobileVolumeHome(), kMuch);
  EXPECT_EQ(_pool->mobileVolumeRoaming(), -kMuch);
  EXPECT_EQ(_pool->registeredRoamNetworks(), networks);
  EXPECT_EQ(written(*_pool, "", true), expected(true, {}, zero));
}

TEST_F(ZtPortalPoolConnectionManagerTest, ACounterOfMinusOneIsWrittenSo) {
  _pool->setSentSMS(-1);
  _pool->setProfileDeletions(std::numeric_limits<std::int32_t>::min());
  const auto value = [](std::size_t index) -> std::string {
    if (index == 7) return "-1";
    return index == 17 ? "-2147483648" : "0";
  };
  EXPECT_EQ(written(*_pool, "", false), expected(false, {}, value));
}

}  // namespace
}  // namespace zt::test
