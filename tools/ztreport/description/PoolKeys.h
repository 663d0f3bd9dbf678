#pragma once

#include <array>
#include <memory>
#include <utility>

#include "tools/ztreport/description/Keys.h"
#include "ztportal/ztportal.h"

/// The keys of the pools and their records. Those that a report carries are in its order, so that
/// the tables serve both ways, from a description to a report and back.
namespace zt::tools {

using Execution = ZtPortalPoolExecution;
using Step = ZtPortalPoolExecutionStep;
using DiagnoseStep = ZtPortalPoolDiagnoseStep;
using Manager = ZtPortalPoolConnectionManager;
using Computer = ZtPortalPoolComputerSystem;
using FirewallApp = ZtPortalPoolFirewallApp;
using AntivirusApp = ZtPortalPoolAntivirusApp;

// What every run has.
template <class Run>
inline constexpr Key<Run> kStartTime = date<Run, &Run::setStartTime>("startTime", "START_TIME");
template <class Run>
inline constexpr Key<Run> kEndTime = date<Run, &Run::setEndTime>("endTime", "END_TIME");
template <class Run>
inline constexpr Key<Run> kEndResultString =
    text<Run, &Run::setEndResultString>("endResultString", "END_RESULTSTRING");
template <class Run>
inline constexpr Key<Run> kEndResultCode = text<Run, &Run::setEndResultCode>("endResultCode",
                                                                             "END_RESULTCODE");
template <class Run>
inline constexpr Key<Run> kEndErrorMessageString =
    text<Run, &Run::setEndErrorMessageString>("endErrorMessageString", "END_ERRORMESSAGESTRING");
template <class Run>
inline constexpr Key<Run> kEndErrorMessageCode =
    text<Run, &Run::setEndErrorMessageCode>("endErrorMessageCode", "END_ERRORMESSAGECODE");
template <class Run>
inline constexpr Key<Run> kSuccessfull = flag<Run, &Run::setSuccessfull>("successfull",
                                                                         "SUCCESSFULL");

/// Of a deinstallation and an initialization.
template <class Run>
inline constexpr std::array<Key<Run>, 7> kRunKeys{
    {kStartTime<Run>, kEndTime<Run>, kEndResultString<Run>, kEndResultCode<Run>,
     kEndErrorMessageString<Run>, kEndErrorMessageCode<Run>, kSuccessfull<Run>}};

inline constexpr std::array<Key<Execution>, 11> kExecutionKeys{{
    text<Execution, &Execution::setExecutionType>("executionType", "INSTALLATION_TYPE"),
    text<Execution, &Execution::setStartPoint>("startPoint", "START_POINT"),
    kStartTime<Execution>,
    text<Execution, &Execution::setEndPoint>("endPoint", "END_POINT"),
    kEndTime<Execution>,
    kEndResultString<Execution>,
    kEndResultCode<Execution>,
    kEndErrorMessageString<Execution>,
    kEndErrorMessageCode<Execution>,
    flag<Execution, &Execution::setCancelled>("cancelled", "CANCELLED"),
    kSuccessfull<Execution>,
}};

inline constexpr std::array<Key<Step>, 5> kStepKeys{{
    text<Step, &Step::setStepName>("stepName", "STEP_NAME"),
    enumeration<Step, &Step::setStepType, kStepTypes>("stepType", "STEP_TYPE"),
    date<Step, &Step::setTimeStamp>("timeStamp", "STEP_TIMESTAMP"),
    text<Step, &Step::setStepMessageString>("stepMessageString", "STEP_MESSAGESTRING"),
    text<Step, &Step::setStepMessageCode>("stepMessageCode", "STEP_MESSAGECODE"),
}};

inline constexpr std::array<Key<DiagnoseStep>, 9> kDiagnoseStepKeys{{
    date<DiagnoseStep, &DiagnoseStep::setTimeStamp>("timeStamp"),
    text<DiagnoseStep, &DiagnoseStep::setStepName>("stepName", "DIAGNOSE_STEPNAME"),
    enumeration<DiagnoseStep, &DiagnoseStep::setDiagnoseType, kDiagnoseTypes>(
        "diagnoseType", "DIAGNOSE_DIAGNOSETYPE"),
    text<DiagnoseStep, &DiagnoseStep::setStepMessageString>("stepMessageString",
                                                            "DIAGNOSE_MESSAGESTRING"),
    text<DiagnoseStep, &DiagnoseStep::setStepMessageCode>("stepMessageCode",
                                                          "DIAGNOSE_MESSAGECODE"),
    flag<DiagnoseStep, &DiagnoseStep::setSuccessfullRepair>("successfullRepair",
                                                            "DIAGNOSE_SUCCESSFULLREPAIR"),
    flag<DiagnoseStep, &DiagnoseStep::setCancelledRepair>("cancelledRepair",
                                                          "DIAGNOSE_CANCELLEDREPAIR"),
    text<DiagnoseStep, &DiagnoseStep::setOptionalString>("optionalString",
                                                         "DIAGNOSE_OPTIONALSTRING"),
    flag<DiagnoseStep, &DiagnoseStep::setOptionalBoolean>("optionalBoolean",
                                                          "DIAGNOSE_OPTIONALBOOLEAN"),
}};

inline void setRoamNetworks(Manager& pool, const JsonValue& list) {
  Manager::Networks networks;
  for (const JsonValue& name : list.list()) networks.emplace_back(name.text());
  pool.setRegisteredRoamNetworks(std::make_shared<const Manager::Networks>(std::move(networks)));
}

inline constexpr std::array<Key<Manager>, 27> kManagerKeys{{
    text<Manager, &Manager::setDeviceModel>("deviceModel", "DEVICE_MODEL"),
    text<Manager, &Manager::setDeviceManufacturer>("deviceManufacturer", "DEVICE_MANUFACTURER"),
    text<Manager, &Manager::setDeviceIMEI>("deviceIMEI", "DEVICE_IMEI"),
    text<Manager, &Manager::setInterfaceType>("interfaceType", "DEVICE_INTERFACE"),
    text<Manager, &Manager::setSimOperator>("simOperator", "SIM_OPERATOR"),
    text<Manager, &Manager::setSimIMSI>("simIMSI", "SIM_IMSI"),
    integer<Manager, &Manager::setMobileConnections>("mobileConnections", "HOME_CONNECTIONS"),
    integer<Manager, &Manager::setMobileConnectionsFailed>("mobileConnectionsFailed",
                                                           "HOME_CONNECTIONS_FAILED"),
    integer<Manager, &Manager::setMobileRoamingConnections>("mobileRoamingConnections",
                                                            "ROAMING_CONNECTIONS"),
    integer<Manager, &Manager::setMobileRoamingConnectionsFailed>("mobileRoamingConnectionsFailed",
                                                                  "ROAMING_CONNECTIONS_FAILED"),
    integer<Manager, &Manager::setRecognizedAltConnections>("recognizedAltConnections",
                                                            "ALTERNATE_CONNECTIONS_RECOGNIZED"),
    integer<Manager, &Manager::setAutoSwitchesToAltConnection>("autoSwitchesToAltConnection",
                                                               "AUTOMATIC_SWITCHES"),
    integer<Manager, &Manager::setManualSwitchesToAltConnection>("manualSwitchesToAltConnection",
                                                                 "MANUAL_SWITCHES"),
    integer<Manager, &Manager::setSentSMS>("sentSMS", "SMS_SENT"),
    integer<Manager, &Manager::setSentSMSWithReport>("sentSMSWithReport", "SMS_SENTWITHREPORT"),
    integer<Manager, &Manager::setSentSMSFlash>("sentSMSFlash", "SMS_FLASH_SENT"),
    integer<Manager, &Manager::setSmsSendErrorCount>("smsSendErrorCount", "SMS_SENDERRORS"),
    integer<Manager, &Manager::setReceivedSMS>("receivedSMS", "SMS_RECEIVED"),
    integer<Manager, &Manager::setReceivedSMSReports>("receivedSMSReports", "SMS_REPORTS_RECEIVED"),
    integer<Manager, &Manager::setManualRegistrationsFailed>("manualRegistrationsFailed",
                                                             "MANUAL_REGISTERS_FAILED"),
    integer<Manager, &Manager::setWifiConnectionsEstablished>("wifiConnectionsEstablished",
                                                              "WIFI_CONNECTIONS_ESTABLISHED"),
    integer<Manager, &Manager::setProfileEdits>("profileEdits", "PROFILE_EDITS"),
    integer<Manager, &Manager::setProfileCreations>("profileCreations", "PROFILE_CREATIONS"),
    integer<Manager, &Manager::setProfileDeletions>("profileDeletions", "PROFILE_DELETIONS"),
    longInteger<Manager, &Manager::setMobileVolumeHome>("mobileVolumeHome"),
    longInteger<Manager, &Manager::setMobileVolumeRoaming>("mobileVolumeRoaming"),
    {{"registeredRoamNetworks", {}, ValueForm::TextList}, setRoamNetworks},
}};

inline constexpr std::array<Key<Computer>, 8> kComputerKeys{{
    text<Computer, &Computer::setOsName>("osName", "OS_NAME"),
    text<Computer, &Computer::setOsVersion>("osVersion", "OS_VERSION"),
    integer<Computer, &Computer::setServicePack>("servicePack", "OS_SERVICEPACK"),
    enumeration<Computer, &Computer::setOsLanguage, kLanguages>("osLanguage", "OS_LANGUAGE"),
    enumeration<Computer, &Computer::setUserLanguage, kLanguages>("userLanguage", "USER_LANGUAGE"),
    flag<Computer, &Computer::setIsAdmin>("isAdmin", "USER_ISADMIN"),
    text<Computer, &Computer::setOsBuildString>("osBuildString"),
    flag<Computer, &Computer::setFirewallEnabled>("firewallEnabled"),
}};

inline constexpr std::array<Key<ZtPortalPoolBrowser>, 3> kBrowserKeys{{
    text<ZtPortalPoolBrowser, &ZtPortalPoolBrowser::setAppName>("appName", "BROWSER_NAME"),
    text<ZtPortalPoolBrowser, &ZtPortalPoolBrowser::setAppVersion>("appVersion", "BROWSER_VERSION"),
    flag<ZtPortalPoolBrowser, &ZtPortalPoolBrowser::setIsStandard>("isStandard", "IS_STANDARD"),
}};

inline constexpr std::array<Key<ZtPortalPoolEMailClient>, 3> kEMailClientKeys{{
    text<ZtPortalPoolEMailClient, &ZtPortalPoolEMailClient::setAppName>("appName",
                                                                        "EMAILCLIENT_NAME"),
    text<ZtPortalPoolEMailClient, &ZtPortalPoolEMailClient::setAppVersion>("appVersion",
                                                                           "EMAILCLIENT_VERSION"),
    flag<ZtPortalPoolEMailClient, &ZtPortalPoolEMailClient::setIsStandard>("isStandard",
                                                                           "IS_STANDARD"),
}};

inline constexpr std::array<Key<FirewallApp>, 4> kFirewallKeys{{
    text<FirewallApp, &FirewallApp::setAppName>("appName", "FIREWALLAPP_NAME"),
    text<FirewallApp, &FirewallApp::setAppVersion>("appVersion", "FIREWALLAPP_VERSION"),
    text<FirewallApp, &FirewallApp::setAppCompany>("appCompany", "FIREWALLAPP_COMPANY"),
    flag<FirewallApp, &FirewallApp::setIsEnabled>("isEnabled", "IS_ENABLED"),
}};

inline constexpr std::array<Key<AntivirusApp>, 5> kAntivirusKeys{{
    text<AntivirusApp, &AntivirusApp::setAppName>("appName", "ANTIVIRUSAPP_NAME"),
    text<AntivirusApp, &AntivirusApp::setAppVersion>("appVersion", "ANTIVIRUSAPP_VERSION"),
    text<AntivirusApp, &AntivirusApp::setAppCompany>("appCompany", "ANTIVIRUSAPP_COMPANY"),
    flag<AntivirusApp, &AntivirusApp::setIsEnabled>("isEnabled", "IS_ENABLED"),
    flag<AntivirusApp, &AntivirusApp::setIsUpToDate>("isUpToDate", "IS_UPTODATE"),
}};

}  // namespace zt::tools
