#include "tools/ztreport/PoolDescription.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztreport/FieldDescription.h"
#include "tools/ztreport/Keys.h"

namespace zt::tools {

namespace {

using Computer = ZtPortalPoolComputerSystem;
using Diagnose = ZtPortalPoolDiagnose;
using Execution = ZtPortalPoolExecution;
using Manager = ZtPortalPoolConnectionManager;
using RunResult = ZtPortalRunResult;

constexpr std::array<Key<RunResult>, 7> kRunKeys{{
    {"startTime", date<RunResult, &RunResult::setStartTime>},
    {"endTime", date<RunResult, &RunResult::setEndTime>},
    {"endResultString", text<RunResult, &RunResult::setEndResultString>},
    {"endResultCode", text<RunResult, &RunResult::setEndResultCode>},
    {"endErrorMessageString", text<RunResult, &RunResult::setEndErrorMessageString>},
    {"endErrorMessageCode", text<RunResult, &RunResult::setEndErrorMessageCode>},
    {"successfull", flag<RunResult, &RunResult::setSuccessfull>},
}};

constexpr std::array<Key<Execution>, 4> kExecutionKeys{{
    {"startPoint", text<Execution, &Execution::setStartPoint>},
    {"endPoint", text<Execution, &Execution::setEndPoint>},
    {"cancelled", flag<Execution, &Execution::setCancelled>},
    {"executionType", text<Execution, &Execution::setExecutionType>},
}};

using Step = ZtPortalPoolExecutionStep;
constexpr std::array<Key<Step>, 4> kStepKeys{{
    {"stepName", text<Step, &Step::setStepName>},
    {"stepType",
     enumeration<Step, &Step::setStepType, ZtPortalDef::stepTypeToString, ZtPortalStepError + 1>},
    {"stepMessageString", text<Step, &Step::setStepMessageString>},
    {"stepMessageCode", text<Step, &Step::setStepMessageCode>},
}};

using DiagnoseStep = ZtPortalPoolDiagnoseStep;
constexpr std::array<Key<DiagnoseStep>, 8> kDiagnoseStepKeys{{
    {"stepName", text<DiagnoseStep, &DiagnoseStep::setStepName>},
    {"diagnoseType", enumeration<DiagnoseStep, &DiagnoseStep::setDiagnoseType,
                                 ZtPortalDef::diagnoseTypeToString, ZtPortalDiagnoseRIS + 1>},
    {"stepMessageString", text<DiagnoseStep, &DiagnoseStep::setStepMessageString>},
    {"stepMessageCode", text<DiagnoseStep, &DiagnoseStep::setStepMessageCode>},
    {"successfullRepair", flag<DiagnoseStep, &DiagnoseStep::setSuccessfullRepair>},
    {"cancelledRepair", flag<DiagnoseStep, &DiagnoseStep::setCancelledRepair>},
    {"optionalString", text<DiagnoseStep, &DiagnoseStep::setOptionalString>},
    {"optionalBoolean", flag<DiagnoseStep, &DiagnoseStep::setOptionalBoolean>},
}};

void setRoamNetworks(Manager& pool, const JsonValue& list) {
  Manager::Networks networks;
  for (const JsonValue& name : list.list()) networks.emplace_back(name.text());
  pool.setRegisteredRoamNetworks(std::make_shared<const Manager::Networks>(std::move(networks)));
}

constexpr std::array<Key<Manager>, 27> kManagerKeys{{
    {"deviceModel", text<Manager, &Manager::setDeviceModel>},
    {"deviceManufacturer", text<Manager, &Manager::setDeviceManufacturer>},
    {"deviceIMEI", text<Manager, &Manager::setDeviceIMEI>},
    {"simOperator", text<Manager, &Manager::setSimOperator>},
    {"simIMSI", text<Manager, &Manager::setSimIMSI>},
    {"interfaceType", text<Manager, &Manager::setInterfaceType>},
    {"sentSMS", integer<Manager, &Manager::setSentSMS>},
    {"sentSMSWithReport", integer<Manager, &Manager::setSentSMSWithReport>},
    {"sentSMSFlash", integer<Manager, &Manager::setSentSMSFlash>},
    {"smsSendErrorCount", integer<Manager, &Manager::setSmsSendErrorCount>},
    {"receivedSMS", integer<Manager, &Manager::setReceivedSMS>},
    {"receivedSMSReports", integer<Manager, &Manager::setReceivedSMSReports>},
    {"manualRegistrationsFailed", integer<Manager, &Manager::setManualRegistrationsFailed>},
    {"registeredRoamNetworks", setRoamNetworks},
    {"wifiConnectionsEstablished", integer<Manager, &Manager::setWifiConnectionsEstablished>},
    {"profileEdits", integer<Manager, &Manager::setProfileEdits>},
    {"profileCreations", integer<Manager, &Manager::setProfileCreations>},
    {"profileDeletions", integer<Manager, &Manager::setProfileDeletions>},
    {"mobileConnections", integer<Manager, &Manager::setMobileConnections>},
    {"mobileConnectionsFailed", integer<Manager, &Manager::setMobileConnectionsFailed>},
    {"mobileRoamingConnections", integer<Manager, &Manager::setMobileRoamingConnections>},
    {"mobileRoamingConnectionsFailed",
     integer<Manager, &Manager::setMobileRoamingConnectionsFailed>},
    {"mobileVolumeHome", longInteger<Manager, &Manager::setMobileVolumeHome>},
    {"mobileVolumeRoaming", longInteger<Manager, &Manager::setMobileVolumeRoaming>},
    {"recognizedAltConnections", integer<Manager, &Manager::setRecognizedAltConnections>},
    {"autoSwitchesToAltConnection", integer<Manager, &Manager::setAutoSwitchesToAltConnection>},
    {"manualSwitchesToAltConnection", integer<Manager, &Manager::setManualSwitchesToAltConnection>},
}};

constexpr std::uint64_t kLanguageCount = ZtLanguageVietnamese + 1;
constexpr std::array<Key<Computer>, 8> kComputerKeys{{
    {"osName", text<Computer, &Computer::setOsName>},
    {"osVersion", text<Computer, &Computer::setOsVersion>},
    {"servicePack", integer<Computer, &Computer::setServicePack>},
    {"osBuildString", text<Computer, &Computer::setOsBuildString>},
    {"osLanguage", enumeration<Computer, &Computer::setOsLanguage, ZtPortalDef::languageToString,
                               kLanguageCount>},
    {"userLanguage", enumeration<Computer, &Computer::setUserLanguage,
                                 ZtPortalDef::languageToString, kLanguageCount>},
    {"isAdmin", flag<Computer, &Computer::setIsAdmin>},
    {"firewallEnabled", flag<Computer, &Computer::setFirewallEnabled>},
}};

/// The keys of a program that is some system's default one of its kind.
template <class Record>
constexpr std::array<Key<Record>, 3> kProgramKeys{{
    {"appName", text<Record, &Record::setAppName>},
    {"appVersion", text<Record, &Record::setAppVersion>},
    {"isStandard", flag<Record, &Record::setIsStandard>},
}};

using FirewallApp = ZtPortalPoolFirewallApp;
constexpr std::array<Key<FirewallApp>, 4> kFirewallKeys{{
    {"appName", text<FirewallApp, &FirewallApp::setAppName>},
    {"appVersion", text<FirewallApp, &FirewallApp::setAppVersion>},
    {"appCompany", text<FirewallApp, &FirewallApp::setAppCompany>},
    {"isEnabled", flag<FirewallApp, &FirewallApp::setIsEnabled>},
}};

using AntivirusApp = ZtPortalPoolAntivirusApp;
constexpr std::array<Key<AntivirusApp>, 5> kAntivirusKeys{{
    {"appName", text<AntivirusApp, &AntivirusApp::setAppName>},
    {"appVersion", text<AntivirusApp, &AntivirusApp::setAppVersion>},
    {"appCompany", text<AntivirusApp, &AntivirusApp::setAppCompany>},
    {"isEnabled", flag<AntivirusApp, &AntivirusApp::setIsEnabled>},
    {"isUpToDate", flag<AntivirusApp, &AntivirusApp::setIsUpToDate>},
}};

ZtDate timeStampOf(const JsonValue& object) {
  const nlohmann::json* timeStamp = object.member("timeStamp");
  if (timeStamp == nullptr) return ZtDate::now();
  return object.child("timeStamp", *timeStamp).date();
}

/// Reads the members of a pool: those that every pool has, and those that `readOwn` knows.
template <class ReadOwn>
void readPool(const JsonValue& object, ZtPortalPool& pool, ReadOwn readOwn) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    if (key == "kind" || key == "timeStamp") return true;  // read before
    if (key == "fields") {
      addFields(value, *pool.fields());
      return true;
    }
    return readOwn(key, value);
  });
}

/// Reads one entry of a list of a pool into the record that was made for it.
template <class Record, std::size_t kCount>
void readRecord(const JsonValue& object, Record& record,
                const std::array<Key<Record>, kCount>& keys, bool hasTimeStamp) {
  object.eachMember([&](const std::string& key, const JsonValue& value) {
    return (hasTimeStamp && key == "timeStamp") || setByKey(keys, record, key, value);
  });
}

void addGeneric(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPool(nullptr, timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "poolType") return false;
    pool->setPoolType(value.string());
    return true;
  });
}

void addExecution(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolExecution(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "steps") {
      return setByKey<RunResult>(kRunKeys, *pool, key, value) ||
             setByKey(kExecutionKeys, *pool, key, value);
    }
    for (const JsonValue& step : value.list()) {
      readRecord(step, *pool->addStep(timeStampOf(step), nullptr, 0), kStepKeys, true);
    }
    return true;
  });
}

template <class Pool, std::shared_ptr<Pool> (ZtPortalData::*kAdd)(const ZtDate&)>
void addRun(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = (document.*kAdd)(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return setByKey<RunResult>(kRunKeys, *pool, key, value);
  });
}

void addDiagnose(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolDiagnose(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    if (key != "steps") return false;
    for (const JsonValue& step : value.list()) {
      readRecord(step, *pool->addStep(timeStampOf(step), nullptr, 0), kDiagnoseStepKeys, true);
    }
    return true;
  });
}

void addManager(const JsonValue& object, ZtPortalData& document, MachineCheck /*check*/) {
  const auto pool = document.addPoolConnectionManager(timeStampOf(object));
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return setByKey(kManagerKeys, *pool, key, value);
  });
}

/// Adds an application to its list for every entry of a list, and says that the key was known.
template <class Add, class Keys>
bool addApplications(const JsonValue& list, const Keys& keys, Add add) {
  for (const JsonValue& application : list.list()) readRecord(application, *add(), keys, false);
  return true;
}

bool addApplicationsByKey(Computer& pool, const std::string& key, const JsonValue& list) {
  if (key == "browsers") {
    return addApplications(list, kProgramKeys<ZtPortalPoolBrowser>,
                           [&] { return pool.addBrowser(nullptr, nullptr, 0); });
  }
  if (key == "emailClients") {
    return addApplications(list, kProgramKeys<ZtPortalPoolEMailClient>,
                           [&] { return pool.addEMailClient(nullptr, nullptr, 0); });
  }
  if (key == "firewallApps") {
    return addApplications(list, kFirewallKeys,
                           [&] { return pool.addFirewallApp(nullptr, nullptr); });
  }
  if (key == "antivirusApps") {
    return addApplications(list, kAntivirusKeys,
                           [&] { return pool.addAntivirusApp(nullptr, nullptr); });
  }
  return false;
}

void addComputer(const JsonValue& object, ZtPortalData& document, MachineCheck check) {
  const nlohmann::json* autoCheck = object.member("autoCheck");
  const bool checks = autoCheck != nullptr && object.child("autoCheck", *autoCheck).boolean();
  const auto pool = document.addPoolComputerSystemWithAutoCheck(
      timeStampOf(object), checks && check == MachineCheck::Allowed);
  readPool(object, *pool, [&](const std::string& key, const JsonValue& value) {
    return key == "autoCheck" || setByKey(kComputerKeys, *pool, key, value) ||
           addApplicationsByKey(*pool, key, value);
  });
}

struct Kind {
  std::string_view name;
  void (*add)(const JsonValue&, ZtPortalData&, MachineCheck);
};
constexpr std::array<Kind, 7> kKinds{{
    {"generic", addGeneric},
    {"execution", addExecution},
    {"deinstallation", addRun<ZtPortalPoolDeinstallation, &ZtPortalData::addPoolDeinstallation>},
    {"initialization", addRun<ZtPortalPoolInitialization, &ZtPortalData::addPoolInitialization>},
    {"diagnose", addDiagnose},
    {"connectionManager", addManager},
    {"computerSystem", addComputer},
}};

}  // namespace

void addPool(const JsonValue& object, ZtPortalData& document, MachineCheck check) {
  std::string known;
  for (const Kind& kind : kKinds) known += (known.empty() ? "" : ", ") + std::string(kind.name);
  const std::string name = discriminator(object, "kind", known);
  for (const Kind& kind : kKinds) {
    if (kind.name == name) return kind.add(object, document, check);
  }
  object.child("kind", *object.member("kind")).fail("no such kind; it is one of " + known);
}

}  // namespace zt::tools
