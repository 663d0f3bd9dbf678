// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ZtPortalData.h"

#include <cerrno>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/identity/MachineIdentity.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/portal/Companion.h"
#include "ztportal/portal/ReportStore.h"
#include "ztportal/portal/ReportingServer.h"
#include "ztportal/portal/RequestText.h"
#include "ztportal/system/HostFolder.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtHost.h"
#include "ztportal/system/ZtSystemInfos.h"

namespace {

ZtString braced(const ZtString& id) {
  std::string text;
  zt::appendText(text, "{", id.printed(), "}");
  return text;
}

ZtString machineIdentifier() {
  if (zt::consentIsRevoked()) return braced(nullptr);
  auto infos = ZtSystemInfos::getSystemInfos();
  return braced(infos[std::string(ZtDIAG_SYSTEM_INFOS_PLATFORM_UUID)]);
}

/// Replaces the customer ID by that of the test mode for a scope. An empty one is deliberately not
/// put back: servers rely on it.
class TestCustomerId {
 public:
  explicit TestCustomerId(ZtString& customerId) : _customerId(customerId), _given(customerId) {
    _customerId = zt::testCustomerId(_given);
  }
  TestCustomerId(const TestCustomerId&) = delete;
  TestCustomerId& operator=(const TestCustomerId&) = delete;
  ~TestCustomerId() {
    if (!_given.empty()) _customerId = std::move(_given);
  }

 private:
  ZtString& _customerId;
  ZtString _given;
};

ZtString orMissing(const std::optional<std::string>& text) {
  return text ? ZtString(*text) : nullptr;
}

constexpr const char* kNoMemory = "out of memory";
constexpr const char* kNoText = "the report has no text: ";

/// Notes in the receipt that something other than the server has failed.
void fail(ZtDelivery& delivery, ZtDeliveryError error, const char* message) noexcept {
  delivery.error = error;
  zt::setText(delivery.message, message);
  zt::log(ZtLogLevel::Warning, "report", "not sent: ", message);
}

/// Notes in the receipt that the report could not be saved.
void failToSave(ZtDelivery& delivery, int error, std::string_view reason) noexcept {
  delivery.saveErrorNumber = error;
  zt::setText(delivery.saveError, reason);
  zt::log(ZtLogLevel::Error, "store", "the report cannot be saved: ", reason);
}

void logUnwritten(const ZtString& path, std::string_view reason) noexcept {
  zt::log(ZtLogLevel::Error, "report", path.view(), " cannot be written: ", reason);
}

}  // namespace

std::shared_ptr<ZtPortalData> ZtPortalData::initWithValues(const ZtString& configurationUrl,
                                                           bool cacheConfiguration,
                                                           const ZtString& customerId,
                                                           const ZtString& applicationId,
                                                           const ZtString& applicationVersion) try {
  return std::make_shared<ZtPortalData>(Creation{}, configurationUrl, cacheConfiguration,
                                        customerId, applicationId, applicationVersion);
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", "there is no report: ", kNoMemory);
  return nullptr;
}

ZtPortalData::ZtPortalData(Creation /*creation*/, ZtString configurationUrl,
                           bool cacheConfiguration, ZtString customerId, ZtString applicationId,
                           ZtString applicationVersion)
    : _reportId(braced(createUUID())),
      _machineId(machineIdentifier()),
      _customerId(std::move(customerId)),
      _applicationId(std::move(applicationId)),
      _applicationVersion(std::move(applicationVersion)),
      _server(std::make_unique<zt::ReportingServer>(std::move(configurationUrl),
                                                    ZtHost::transportOptions())),
      _cacheConfiguration(cacheConfiguration) {
  _initHttp(_server->configurationUrl(), _cacheConfiguration);
}

ZtPortalData::~ZtPortalData() = default;

ZtString ZtPortalData::createUUID() { return zt::randomUuid(); }

// Pools.

template <class Pool, class... Arguments>
std::shared_ptr<Pool> ZtPortalData::_addPool(const Arguments&... arguments) try {
  auto pool = Pool::initWithValues(arguments...);
  _pools.push_back(pool);
  return pool;
} catch (const ZtException& error) {
  zt::log(ZtLogLevel::Error, "report", "a pool was not added: ", error.name().view());
  return nullptr;
}

std::shared_ptr<ZtPortalPool> ZtPortalData::addPool(const ZtString& poolType,
                                                    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPool>(poolType, timeStamp);
}

std::shared_ptr<ZtPortalPoolComputerSystem> ZtPortalData::addPoolComputerSystem(
    const ZtDate& timeStamp) {
  return addPoolComputerSystemWithAutoCheck(timeStamp, false);
}

std::shared_ptr<ZtPortalPoolComputerSystem> ZtPortalData::addPoolComputerSystemWithAutoCheck(
    const ZtDate& timeStamp, bool autoCheck) {
  return _addPool<ZtPortalPoolComputerSystem>(timeStamp, autoCheck);
}

std::shared_ptr<ZtPortalPoolExecution> ZtPortalData::addPoolExecution(const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolExecution>(timeStamp);
}

std::shared_ptr<ZtPortalPoolDeinstallation> ZtPortalData::addPoolDeinstallation(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolDeinstallation>(timeStamp);
}

std::shared_ptr<ZtPortalPoolInitialization> ZtPortalData::addPoolInitialization(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolInitialization>(timeStamp);
}

std::shared_ptr<ZtPortalPoolDiagnose> ZtPortalData::addPoolDiagnose(const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolDiagnose>(timeStamp);
}

std::shared_ptr<ZtPortalPoolConnectionManager> ZtPortalData::addPoolConnectionManager(
    const ZtDate& timeStamp) {
  return _addPool<ZtPortalPoolConnectionManager>(timeStamp);
}

const std::shared_ptr<ZtPortalPool>& ZtPortalData::_pool(std::int32_t index) const {
  return zt::entryAt(_pools, index);
}

// Request text.

std::string ZtPortalData::getSoapString() try { return _request(); } catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", kNoText, kNoMemory);
  return "";
}

std::string ZtPortalData::generateXml(const ZtString& /*text*/, bool soap) const try {
  return _text(soap);
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Error, "report", kNoText, kNoMemory);
  return "";
}

std::string ZtPortalData::_request() {
  if (!_mutexEnabled()) return _text(true);
  const TestCustomerId scope(_customerId);
  return _text(true);
}

std::string ZtPortalData::_text(bool soap) const try {
  return zt::reportText({_reportId, _machineId, _customerId, _applicationId, _applicationVersion},
                        _pools, soap);
} catch (const ZtException& error) {
  // Without the reason, which may contain a value of the host's own field.
  zt::log(ZtLogLevel::Error, "report", kNoText, "a field has failed with ", error.name().view());
  return "";
}

// Configuration and transport.

const ZtString& ZtPortalData::reportUrl() const { return _server->reportUrl(); }
const ZtString& ZtPortalData::reportTestUrl() const { return _server->testUrl(); }
const ZtString& ZtPortalData::configurationUrl() const { return _server->configurationUrl(); }
const ZtString& ZtPortalData::serverVersion() const { return _server->version(); }
bool ZtPortalData::gotConfiguration() const { return _server->gotConfiguration(); }
bool ZtPortalData::online() const { return _server->online(); }

std::string ZtPortalData::setTransportOptions(ZtTransportOptions options) {
  std::string problem = options.problem();
  if (problem.empty()) _server->setOptions(std::move(options));
  return problem;
}

ZtString ZtPortalData::_localSupportFolder() { return orMissing(zt::hostFolder()); }

ZtString ZtPortalData::_supportFolder(std::uint32_t domain, const ZtString& relativePath) {
  return orMissing(
      zt::supportFolder(static_cast<std::int16_t>(domain & 0xFFFFU), relativePath.view()));
}

ZtString ZtPortalData::_httpRequest(const ZtString& url, const ZtString& command) {
  ZtDelivery ignored;
  return zt::ReportingServer::exchange(url, command, _server->options(), ignored);
}

void ZtPortalData::_initHttp(const ZtString& /*url*/, bool cacheConfiguration) {
  _server->connect(cacheConfiguration);
}

bool ZtPortalData::_getConfiguration(const ZtString& /*url*/, bool cacheConfiguration) {
  return _server->readConfiguration(cacheConfiguration);
}

ZtString ZtPortalData::_getReportUrl() const { return _server->url(); }

ZtString ZtPortalData::_getServerVersion() { return _server->readVersion(); }

// Delivery and offline store.

bool ZtPortalData::_mutexEnabled() const { return zt::testModeIsOn(); }

void ZtPortalData::_notifyGhost(const ZtString& request) { zt::broadcastRequest(request); }

/// Notes in the receipt whether the user has revoked the consent.
bool ZtPortalData::_isForbidden() {
  if (!zt::consentIsRevoked()) return false;
  _delivery = zt::ReportingServer::withoutConsent();
  return true;
}

/// The request as the host's hook leaves it. A missing one has been dropped, as the receipt says.
ZtString ZtPortalData::_afterHook(std::string request) {
  if (zt::passesRequestHook(request)) return request;
  _delivery = zt::ReportingServer::dropped();
  return nullptr;
}

bool ZtPortalData::reportToServer() try {
  _delivery = {};
  if (_isForbidden()) return false;
  const ZtString request = _afterHook(_request());
  if (request.isNull()) return false;
  _notifyGhost(request);
  // Only a document that once had a URL tries to connect again.
  if (!_getReportUrl().empty() && !_server->isReady()) {
    _initHttp(_server->configurationUrl(), _cacheConfiguration);
  }
  _delivery = _server->send(request);
  if (_delivery.outcome == ZtDeliveryOutcome::Accepted) return true;
  _save();
  return false;
} catch (const ZtException& error) {
  fail(_delivery, ZtDeliveryError::Host, error.what());
  return false;
} catch (const std::bad_alloc&) {
  fail(_delivery, ZtDeliveryError::Memory, kNoMemory);
  // The delivery may have failed, and then there is memory again to save the report.
  _save();
  return false;
}

bool ZtPortalData::reportToFile(const ZtString& path) try {
  if (path.isNull() || zt::consentIsRevoked()) return false;
  std::string request = _request();
  if (!zt::passesRequestHook(request)) return false;
  if (!zt::Platform::current().files().write(std::string(path), request)) {
    logUnwritten(path, std::generic_category().message(errno));
  }
  return false;
} catch (const ZtException& error) {
  logUnwritten(path, error.what());
  return false;
} catch (const std::bad_alloc&) {
  logUnwritten(path, kNoMemory);
  return false;
}

void ZtPortalData::saveReport() {
  _delivery = {};
  _save();
}

/// Saves the report, and notes in the receipt where or why not.
void ZtPortalData::_save() try {
  if (_isForbidden()) return;
  const auto store = zt::ReportStore::open();
  std::error_code error(errno, std::generic_category());
  if (store) {
    std::string file = store->fileOf(_reportId);
    const ZtString request = _afterHook(_request());
    if (request.isNull()) return;
    error = store->save(_reportId, request.view());
    if (!error) _delivery.savedTo = std::move(file);
  }
  if (_delivery.message.empty()) {
    zt::setText(_delivery.message, error ? "The report could not be saved."
                                         : "The report was saved without sending it.");
  }
  if (error) return failToSave(_delivery, error.value(), error.message());
  zt::log(ZtLogLevel::Info, "store", "saved in ", _delivery.savedTo);
} catch (const ZtException& error) {
  failToSave(_delivery, EIO, error.what());
} catch (const std::bad_alloc&) {
  failToSave(_delivery, ENOMEM, kNoMemory);
}

bool ZtPortalData::sendSavedReports() try {
  if (_isForbidden()) return false;
  const auto store = zt::ReportStore::open();
  if (!store) return false;
  for (const std::string& file : store->files()) {
    if (!sendSavedReport(file)) return false;
    zt::ReportStore::remove(file);
    _delivery.savedTo.clear();
  }
  return false;
} catch (const ZtException& error) {
  zt::log(ZtLogLevel::Warning, "store", "the saved reports are not sent: ", error.what());
  return false;
} catch (const std::bad_alloc&) {
  zt::log(ZtLogLevel::Warning, "store", "the saved reports are not sent: ", kNoMemory);
  return false;
}

bool ZtPortalData::sendSavedReport(const ZtString& path) try {
  _delivery = {};
  if (_isForbidden()) return false;
  if (!_server->isReady()) _initHttp(_server->configurationUrl(), _cacheConfiguration);
  std::string file(path.view());
  if (!_server->online()) {
    _delivery = _server->notSent();
    _delivery.savedTo = std::move(file);
    return false;
  }

  const auto saved = file.empty() ? std::nullopt : zt::ReportStore::request(file);
  if (!saved) {
    _delivery.outcome = ZtDeliveryOutcome::Unreadable;
    _delivery.error = ZtDeliveryError::File;
    zt::setText(_delivery.message, "The file cannot be read or is not well-formed XML.");
    zt::log(ZtLogLevel::Warning, "store", file, " is not sent: ", _delivery.message);
    return false;
  }
  const ZtString request = _afterHook(*saved);
  if (!request.isNull()) {
    _notifyGhost(request);
    _delivery = _server->send(request);
  }
  _delivery.savedTo = std::move(file);
  return _delivery.outcome == ZtDeliveryOutcome::Accepted;
} catch (const ZtException& error) {
  fail(_delivery, ZtDeliveryError::Host, error.what());
  return false;
} catch (const std::bad_alloc&) {
  fail(_delivery, ZtDeliveryError::Memory, kNoMemory);
  return false;
}

ZtString ZtPortalData::reportFile() const { return _getReportFile(); }

ZtString ZtPortalData::reportFolder() { return _getReportFolder(); }

std::vector<std::string> ZtPortalData::runningCompanions() try {
  return zt::runningCompanions();
} catch (const ZtException& error) {
  zt::log(ZtLogLevel::Warning, "configuration", "companions cannot be found: ", error.what());
  return {};
}

ZtString ZtPortalData::_getReportFile() const {
  const auto store = zt::ReportStore::open();
  return store ? ZtString(store->fileOf(_reportId)) : nullptr;
}

ZtString ZtPortalData::_getReportFolder() {
  const auto store = zt::ReportStore::open();
  return store ? ZtString(store->folder()) : nullptr;
}
