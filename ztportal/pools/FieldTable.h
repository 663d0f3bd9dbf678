// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <tuple>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtLanguage.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/pools/ZtPortalPoolConnectionManager.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"
#include "ztportal/pools/ZtPortalRunResult.h"

/// The fields of every pool and record: one table for each class, in the order in which reports
/// have them.
///
/// The writer of reports, the JSON description in both directions, its reference page and the C
/// interface use these tables; no other code lists the fields. The programs include this header
/// too, so it uses only exported symbols of the library.
namespace zt {

/// The names of the numbers of an enumeration.
struct Enumeration {
  std::string_view name;              ///< of the enumeration itself, for people
  ZtString (*nameOf)(std::uint64_t);  ///< empty for a number without a name
  std::uint64_t count;                ///< all named numbers are below this
  std::uint64_t unnamed;              ///< a number without a name, written as an empty text
};

inline constexpr Enumeration kStepTypes{"step type", ZtPortalDef::stepTypeToString,
                                        ZtPortalStepError + 1, ZtPortalStepError + 1};
inline constexpr Enumeration kDiagnoseTypes{"diagnose type", ZtPortalDef::diagnoseTypeToString,
                                            ZtPortalDiagnoseRIS + 1, ZtPortalDiagnoseRIS + 1};
inline constexpr Enumeration kLanguages{"language", ZtPortalDef::languageToString,
                                        ZtLanguageVietnamese + 1, ZtLanguageSerbian};

/// A row of a table. The type of the member is the type of the field: `ZtAtomic<ZtString>`,
/// `ZtAtomic<ZtDate>`, `std::int32_t`, `ZtBOOL`, `std::uint64_t` (an enumeration), or a list of
/// records. A field that is not written into reports may also be a `std::int64_t` or a list of
/// strings.
template <class Owner, class MemberType, bool kWritten>
struct Field {
  using Member = MemberType;
  static constexpr bool kInReports = kWritten;

  std::string_view key;       ///< in a JSON description; the name of the accessor
  std::string_view wireName;  ///< in a report
  MemberType Owner::*member;
  const Enumeration* enumeration = nullptr;
};

template <class Owner, class Member>
constexpr Field<Owner, Member, true> field(std::string_view key, std::string_view wireName,
                                           Member Owner::*member) {
  return {key, wireName, member};
}
template <class Owner>
constexpr Field<Owner, std::uint64_t, true> field(std::string_view key, std::string_view wireName,
                                                  std::uint64_t Owner::*member,
                                                  const Enumeration& enumeration) {
  return {key, wireName, member, &enumeration};
}
/// A field for the host's own use, which is not written into reports.
template <class Owner, class Member>
constexpr Field<Owner, Member, false> hostField(std::string_view key, Member Owner::*member) {
  return {key, {}, member};
}

/// A boolean field without a member, which is always written as FALSE.
struct FalseField {
  std::string_view wireName;
};

/// `Type` is the class of the records of a list. There is no `Type` for a member that is not a list
/// of records.
template <class Member>
struct RecordOf {};
template <class Record>
struct RecordOf<std::vector<std::shared_ptr<Record>>> {
  using Type = Record;
};
template <class List>
struct RecordOf<const std::shared_ptr<List>> : RecordOf<List> {};
template <class List>
struct RecordOf<ZtAtomic<std::shared_ptr<List>>> : RecordOf<List> {};

/// The table of a class. A pool also has its kind in a description and its type in a report.
template <class Object>
struct Fields;

/// Calls `visit` with each row of the table of `Object`, in order.
template <class Object, class Visit>
constexpr void eachField(Visit visit) {
  std::apply([&visit](const auto&... rows) { (visit(rows), ...); }, Fields<Object>::kTable);
}

// The tables.

template <>
struct Fields<ZtPortalPool> {
  static constexpr std::string_view kKind = "generic";
  static constexpr std::tuple kTable{hostField("poolType", &ZtPortalPool::_poolType)};
};

/// The common fields of the pools that describe a run, in the order in which all of them write
/// them.
template <>
struct Fields<ZtPortalRunResult> {
  using Run = ZtPortalRunResult;
  static constexpr auto kStartTime = field("startTime", "START_TIME", &Run::_startTime);
  static constexpr auto kEndTime = field("endTime", "END_TIME", &Run::_endTime);
  static constexpr auto kResultString =
      field("endResultString", "END_RESULTSTRING", &Run::_endResultString);
  static constexpr auto kResultCode =
      field("endResultCode", "END_RESULTCODE", &Run::_endResultCode);
  static constexpr auto kErrorMessageString =
      field("endErrorMessageString", "END_ERRORMESSAGESTRING", &Run::_endErrorMessageString);
  static constexpr auto kErrorMessageCode =
      field("endErrorMessageCode", "END_ERRORMESSAGECODE", &Run::_endErrorMessageCode);
  static constexpr auto kSuccessfull = field("successfull", "SUCCESSFULL", &Run::_successfull);
  static constexpr std::tuple kTable{
      kStartTime,          kEndTime,          kResultString, kResultCode,
      kErrorMessageString, kErrorMessageCode, kSuccessfull};
};

template <>
struct Fields<ZtPortalPoolExecutionStep> {
  using Step = ZtPortalPoolExecutionStep;
  static constexpr std::tuple kTable{
      field("stepName", "STEP_NAME", &Step::_stepName),
      field("stepType", "STEP_TYPE", &Step::_stepType, kStepTypes),
      field("timeStamp", "STEP_TIMESTAMP", &Step::_timeStamp),
      field("stepMessageString", "STEP_MESSAGESTRING", &Step::_stepMessageString),
      field("stepMessageCode", "STEP_MESSAGECODE", &Step::_stepMessageCode),
  };
};

template <>
struct Fields<ZtPortalPoolExecution> {
  using Execution = ZtPortalPoolExecution;
  using Run = Fields<ZtPortalRunResult>;
  static constexpr std::string_view kKind = "execution";
  static constexpr std::string_view kType = "EXECUTION";
  static constexpr std::tuple kTable{
      field("executionType", "INSTALLATION_TYPE", &Execution::_executionType),
      field("startPoint", "START_POINT", &Execution::_startPoint),
      Run::kStartTime,
      field("endPoint", "END_POINT", &Execution::_endPoint),
      Run::kEndTime,
      Run::kResultString,
      Run::kResultCode,
      Run::kErrorMessageString,
      Run::kErrorMessageCode,
      field("cancelled", "CANCELLED", &Execution::_cancelled),
      Run::kSuccessfull,
      field("steps", "INSTALLATIONSTEPS", &Execution::_executionSteps),
  };
};

template <>
struct Fields<ZtPortalPoolDeinstallation> {
  static constexpr std::string_view kKind = "deinstallation";
  static constexpr std::string_view kType = "DEINSTALLATION";
  static constexpr std::tuple kTable = Fields<ZtPortalRunResult>::kTable;
};

template <>
struct Fields<ZtPortalPoolInitialization> {
  static constexpr std::string_view kKind = "initialization";
  static constexpr std::string_view kType = "INITIALIZATION";
  static constexpr std::tuple kTable = Fields<ZtPortalRunResult>::kTable;
};

template <>
struct Fields<ZtPortalPoolDiagnoseStep> {
  using Step = ZtPortalPoolDiagnoseStep;
  static constexpr std::tuple kTable{
      hostField("timeStamp", &Step::_timeStamp),
      field("stepName", "DIAGNOSE_STEPNAME", &Step::_stepName),
      field("diagnoseType", "DIAGNOSE_DIAGNOSETYPE", &Step::_diagnoseType, kDiagnoseTypes),
      field("stepMessageString", "DIAGNOSE_MESSAGESTRING", &Step::_stepMessageString),
      field("stepMessageCode", "DIAGNOSE_MESSAGECODE", &Step::_stepMessageCode),
      field("successfullRepair", "DIAGNOSE_SUCCESSFULLREPAIR", &Step::_successfullRepair),
      field("cancelledRepair", "DIAGNOSE_CANCELLEDREPAIR", &Step::_cancelledRepair),
      field("optionalString", "DIAGNOSE_OPTIONALSTRING", &Step::_optionalString),
      field("optionalBoolean", "DIAGNOSE_OPTIONALBOOLEAN", &Step::_optionalBoolean),
  };
};

template <>
struct Fields<ZtPortalPoolDiagnose> {
  static constexpr std::string_view kKind = "diagnose";
  static constexpr std::string_view kType = "DIAGNOSE";
  static constexpr std::tuple kTable{
      field("steps", "DIAGNOSESTEPS", &ZtPortalPoolDiagnose::_diagnoseSteps)};
};

template <>
struct Fields<ZtPortalPoolConnectionManager> {
  using Manager = ZtPortalPoolConnectionManager;
  static constexpr std::string_view kKind = "connectionManager";
  static constexpr std::string_view kType = "CONNECTIONMANAGER";
  static constexpr std::tuple kTable{
      field("deviceModel", "DEVICE_MODEL", &Manager::_deviceModel),
      field("deviceManufacturer", "DEVICE_MANUFACTURER", &Manager::_deviceManufacturer),
      field("deviceIMEI", "DEVICE_IMEI", &Manager::_deviceIMEI),
      field("interfaceType", "DEVICE_INTERFACE", &Manager::_interfaceType),
      field("simOperator", "SIM_OPERATOR", &Manager::_simOperator),
      field("simIMSI", "SIM_IMSI", &Manager::_simIMSI),
      field("mobileConnections", "HOME_CONNECTIONS", &Manager::_mobileConnections),
      field("mobileConnectionsFailed", "HOME_CONNECTIONS_FAILED",
            &Manager::_mobileConnectionsFailed),
      field("mobileRoamingConnections", "ROAMING_CONNECTIONS", &Manager::_mobileRoamingConnections),
      field("mobileRoamingConnectionsFailed", "ROAMING_CONNECTIONS_FAILED",
            &Manager::_mobileRoamingConnectionsFailed),
      field("recognizedAltConnections", "ALTERNATE_CONNECTIONS_RECOGNIZED",
            &Manager::_recognizedAltConnections),
      field("autoSwitchesToAltConnection", "AUTOMATIC_SWITCHES",
            &Manager::_autoSwitchesToAltConnection),
      field("manualSwitchesToAltConnection", "MANUAL_SWITCHES",
            &Manager::_manualSwitchesToAltConnection),
      field("sentSMS", "SMS_SENT", &Manager::_sentSMS),
      field("sentSMSWithReport", "SMS_SENTWITHREPORT", &Manager::_sentSMSWithReport),
      field("sentSMSFlash", "SMS_FLASH_SENT", &Manager::_sentSMSFlash),
      field("smsSendErrorCount", "SMS_SENDERRORS", &Manager::_smsSendErrorCount),
      field("receivedSMS", "SMS_RECEIVED", &Manager::_receivedSMS),
      field("receivedSMSReports", "SMS_REPORTS_RECEIVED", &Manager::_receivedSMSReports),
      field("manualRegistrationsFailed", "MANUAL_REGISTERS_FAILED",
            &Manager::_manualRegistrationsFailed),
      field("wifiConnectionsEstablished", "WIFI_CONNECTIONS_ESTABLISHED",
            &Manager::_wifiConnectionsEstablished),
      field("profileEdits", "PROFILE_EDITS", &Manager::_profileEdits),
      field("profileCreations", "PROFILE_CREATIONS", &Manager::_profileCreations),
      field("profileDeletions", "PROFILE_DELETIONS", &Manager::_profileDeletions),
      hostField("mobileVolumeHome", &Manager::_mobileVolumeHome),
      hostField("mobileVolumeRoaming", &Manager::_mobileVolumeRoaming),
      hostField("registeredRoamNetworks", &Manager::_registeredRoamNetworks),
  };
};

template <>
struct Fields<ZtPortalPoolBrowser> {
  using Browser = ZtPortalPoolBrowser;
  static constexpr std::tuple kTable{
      field("appName", "BROWSER_NAME", &Browser::_appName),
      field("appVersion", "BROWSER_VERSION", &Browser::_appVersion),
      field("isStandard", "IS_STANDARD", &Browser::_isStandard),
  };
};

template <>
struct Fields<ZtPortalPoolEMailClient> {
  using Client = ZtPortalPoolEMailClient;
  static constexpr std::tuple kTable{
      field("appName", "EMAILCLIENT_NAME", &Client::_appName),
      field("appVersion", "EMAILCLIENT_VERSION", &Client::_appVersion),
      field("isStandard", "IS_STANDARD", &Client::_isStandard),
  };
};

template <>
struct Fields<ZtPortalPoolFirewallApp> {
  using App = ZtPortalPoolFirewallApp;
  static constexpr std::tuple kTable{
      field("appName", "FIREWALLAPP_NAME", &App::_appName),
      field("appVersion", "FIREWALLAPP_VERSION", &App::_appVersion),
      field("appCompany", "FIREWALLAPP_COMPANY", &App::_appCompany),
      field("isEnabled", "IS_ENABLED", &App::_isEnabled),
  };
};

template <>
struct Fields<ZtPortalPoolAntivirusApp> {
  using App = ZtPortalPoolAntivirusApp;
  static constexpr std::tuple kTable{
      field("appName", "ANTIVIRUSAPP_NAME", &App::_appName),
      field("appVersion", "ANTIVIRUSAPP_VERSION", &App::_appVersion),
      field("appCompany", "ANTIVIRUSAPP_COMPANY", &App::_appCompany),
      field("isEnabled", "IS_ENABLED", &App::_isEnabled),
      field("isUpToDate", "IS_UPTODATE", &App::_isUpToDate),
  };
};

template <>
struct Fields<ZtPortalPoolComputerSystem> {
  using Computer = ZtPortalPoolComputerSystem;
  static constexpr std::string_view kKind = "computerSystem";
  static constexpr std::string_view kType = "COMPUTER_SYSTEM";
  static constexpr std::tuple kTable{
      field("osName", "OS_NAME", &Computer::_osName),
      field("osVersion", "OS_VERSION", &Computer::_osVersion),
      field("servicePack", "OS_SERVICEPACK", &Computer::_servicePack),
      field("osLanguage", "OS_LANGUAGE", &Computer::_osLanguage, kLanguages),
      field("userLanguage", "USER_LANGUAGE", &Computer::_userLanguage, kLanguages),
      field("isAdmin", "USER_ISADMIN", &Computer::_isAdmin),
      field("browsers", "BROWSERS", &Computer::_browsers),
      field("emailClients", "EMAILCLIENTS", &Computer::_emailClients),
      FalseField{"WINDOWS_FIREWALL_ENABLED"},  // deliberately not `firewallEnabled`
      field("firewallApps", "FIREWALLAPPS", &Computer::_firewallApps),
      field("antivirusApps", "ANTIVIRUSAPP", &Computer::_antivirusApps),
      hostField("osBuildString", &Computer::_osBuildString),
      hostField("firewallEnabled", &Computer::_firewallEnabled),
  };
};

template <class... Pools, class Visit>
constexpr void eachOf(Visit visit) {
  (visit.template operator()<Pools>(), ...);
}

/// Calls `visit.operator()<Pool>()` for the class of each kind of pool. This is the only list of
/// them.
template <class Visit>
constexpr void eachPoolClass(Visit visit) {
  eachOf<ZtPortalPool, ZtPortalPoolExecution, ZtPortalPoolDeinstallation,
         ZtPortalPoolInitialization, ZtPortalPoolDiagnose, ZtPortalPoolConnectionManager,
         ZtPortalPoolComputerSystem>(visit);
}

}  // namespace zt
