# SPDX-License-Identifier: Apache-2.0
"""The kinds of pools. Made by python/generate.py; do not edit."""

from __future__ import annotations

from ._interface import OpenEnum
from ._library import Text
from .fields import Date, Enumeration, Number, Pool, Record, String, Value, boolean


class DiagnoseType(OpenEnum):
    MANUAL = 0
    AUTOMATIC = 1
    RIS = 2


class Language(OpenEnum):
    NEUTRAL = 1
    AFRIKAANS = 2
    ALBANIAN = 3
    ARABIC = 4
    BASQUE = 5
    BELARUSIAN = 6
    BULGARIAN = 7
    CATALAN = 8
    CHINESE = 9
    CROATIAN = 10
    CZECH = 11
    DANISH = 12
    DUTCH = 13
    ENGLISH = 14
    ESTONIAN = 15
    FAROESE = 16
    FINNISH = 17
    FRENCH = 18
    GERMAN = 19
    GREEK = 20
    HEBREW = 21
    HUNGARIAN = 22
    ICELANDIC = 23
    INDONESIAN = 24
    ITALIAN = 25
    JAPANESE = 26
    KOREAN = 27
    LATVIAN = 28
    LITHUANIAN = 29
    NORWEGIAN = 30
    POLISH = 31
    PORTUGUESE = 32
    ROMANIAN = 33
    RUSSIAN = 34
    SLOVAK = 36
    SLOVENIAN = 37
    SPANISH = 38
    SWEDISH = 39
    THAI = 40
    TURKISH = 41
    UKRAINIAN = 42
    VIETNAMESE = 43


class StepType(OpenEnum):
    ENTER = 0
    LEAVE = 1
    EXIT = 2
    INFO = 3
    ERROR = 4


class GenericPool(Pool):
    __slots__ = ()
    _kind = b"generic"
    poolType = String()


class ExecutionStep(Record):
    __slots__ = ()
    stepName = String()
    stepType = Enumeration(StepType)
    timeStamp = Date()
    stepMessageString = String()
    stepMessageCode = String()


class ExecutionPool(Pool):
    __slots__ = ()
    _kind = b"execution"
    executionType = String()
    startPoint = String()
    startTime = Date()
    endPoint = String()
    endTime = Date()
    endResultString = String()
    endResultCode = String()
    endErrorMessageString = String()
    endErrorMessageCode = String()
    cancelled = Number(boolean)
    successfull = Number(boolean)

    def add_step(self, stepName: Text = None, **values: Value) -> ExecutionStep:
        return self._add_record(ExecutionStep, b"steps", {"stepName": stepName, **values})


class DeinstallationPool(Pool):
    __slots__ = ()
    _kind = b"deinstallation"
    startTime = Date()
    endTime = Date()
    endResultString = String()
    endResultCode = String()
    endErrorMessageString = String()
    endErrorMessageCode = String()
    successfull = Number(boolean)


class InitializationPool(Pool):
    __slots__ = ()
    _kind = b"initialization"
    startTime = Date()
    endTime = Date()
    endResultString = String()
    endResultCode = String()
    endErrorMessageString = String()
    endErrorMessageCode = String()
    successfull = Number(boolean)


class DiagnoseStep(Record):
    __slots__ = ()
    timeStamp = Date()
    stepName = String()
    diagnoseType = Enumeration(DiagnoseType)
    stepMessageString = String()
    stepMessageCode = String()
    successfullRepair = Number(boolean)
    cancelledRepair = Number(boolean)
    optionalString = String()
    optionalBoolean = Number(boolean)


class DiagnosePool(Pool):
    __slots__ = ()
    _kind = b"diagnose"

    def add_step(self, stepName: Text = None, **values: Value) -> DiagnoseStep:
        return self._add_record(DiagnoseStep, b"steps", {"stepName": stepName, **values})


class ConnectionManagerPool(Pool):
    __slots__ = ()
    _kind = b"connectionManager"
    deviceModel = String()
    deviceManufacturer = String()
    deviceIMEI = String()
    interfaceType = String()
    simOperator = String()
    simIMSI = String()
    mobileConnections = Number(int)
    mobileConnectionsFailed = Number(int)
    mobileRoamingConnections = Number(int)
    mobileRoamingConnectionsFailed = Number(int)
    recognizedAltConnections = Number(int)
    autoSwitchesToAltConnection = Number(int)
    manualSwitchesToAltConnection = Number(int)
    sentSMS = Number(int)
    sentSMSWithReport = Number(int)
    sentSMSFlash = Number(int)
    smsSendErrorCount = Number(int)
    receivedSMS = Number(int)
    receivedSMSReports = Number(int)
    manualRegistrationsFailed = Number(int)
    wifiConnectionsEstablished = Number(int)
    profileEdits = Number(int)
    profileCreations = Number(int)
    profileDeletions = Number(int)
    mobileVolumeHome = Number(int)
    mobileVolumeRoaming = Number(int)

    def add_registered_roam_network(self, value: str | bytes) -> None:
        self._set_string(b"registeredRoamNetworks", value)


class Browser(Record):
    __slots__ = ()
    appName = String()
    appVersion = String()
    isStandard = Number(boolean)


class EmailClient(Record):
    __slots__ = ()
    appName = String()
    appVersion = String()
    isStandard = Number(boolean)


class FirewallApp(Record):
    __slots__ = ()
    appName = String()
    appVersion = String()
    appCompany = String()
    isEnabled = Number(boolean)


class AntivirusApp(Record):
    __slots__ = ()
    appName = String()
    appVersion = String()
    appCompany = String()
    isEnabled = Number(boolean)
    isUpToDate = Number(boolean)


class ComputerSystemPool(Pool):
    __slots__ = ()
    _kind = b"computerSystem"
    osName = String()
    osVersion = String()
    servicePack = Number(int)
    osLanguage = Enumeration(Language)
    userLanguage = Enumeration(Language)
    isAdmin = Number(boolean)
    osBuildString = String()
    firewallEnabled = Number(boolean)

    def add_browser(self, appName: Text = None, **values: Value) -> Browser:
        return self._add_record(Browser, b"browsers", {"appName": appName, **values})

    def add_email_client(self, appName: Text = None, **values: Value) -> EmailClient:
        return self._add_record(EmailClient, b"emailClients", {"appName": appName, **values})

    def add_firewall_app(self, appName: Text = None, **values: Value) -> FirewallApp:
        return self._add_record(FirewallApp, b"firewallApps", {"appName": appName, **values})

    def add_antivirus_app(self, appName: Text = None, **values: Value) -> AntivirusApp:
        return self._add_record(AntivirusApp, b"antivirusApps", {"appName": appName, **values})


__all__ = ["DiagnoseType", "Language", "StepType", "GenericPool", "ExecutionStep", "ExecutionPool",
           "DeinstallationPool", "InitializationPool", "DiagnoseStep", "DiagnosePool",
           "ConnectionManagerPool", "Browser", "EmailClient", "FirewallApp", "AntivirusApp",
           "ComputerSystemPool"]
