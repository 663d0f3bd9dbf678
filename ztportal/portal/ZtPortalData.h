// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/pools/ZtPortalPoolComputerSystem.h"
#include "ztportal/pools/ZtPortalPoolConnectionManager.h"
#include "ztportal/pools/ZtPortalPoolDeinstallation.h"
#include "ztportal/pools/ZtPortalPoolDiagnose.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"
#include "ztportal/pools/ZtPortalPoolInitialization.h"
#include "ztportal/portal/ZtDelivery.h"

namespace zt {
class ReportingServer;
}

/// The report document: the identity of a report, its pools, and its delivery to the server.
///
///     auto document = ZtPortalData::initWithValues(configurationUrl, false, "Kelvane",
///                                                  "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}",
///                                                  "2.1");
///     document->addPool("CUSTOM", ZtDate::now())->addString("RESULT", "OK");
///     bool accepted = document->reportToServer();
///
/// Lifecycle:
/// - created: reads the configuration document and asks the server for its version, in up to two
///   requests of two seconds each; this succeeds even if neither gets a response;
/// - filled: pools are added, never removed, and may be changed at any time;
/// - sent (`reportToServer`): accepted, or else saved as a file in the offline store; or saved
///   without sending (`saveReport`);
/// - resent: `sendSavedReports` of any later document sends the reports in the store.
///
/// While the user's consent is revoked (`ZtHost::setConsent`), a document examines, sends, saves
/// and broadcasts nothing. `ZtHost` also has a filter for values and a hook for whole requests.
///
/// The store is the folder `Kelvane/<name of the host>/reports` in the user's application-support
/// folder, one file per report, `{<report ID>}.ztr`. A name that would lead elsewhere (with a slash
/// or a control character, "." or "..") is replaced by that of the executable file. The store is
/// not locked: two processes that resend at the same time may send a file twice.
///
/// A document is used by one thread at a time; different threads may use different documents. It
/// prints nothing and starts no thread.
class ZT_EXPORT ZtPortalData {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  /// Creates a document with a new report ID. `configurationUrl` is the URL of the customer's
  /// configuration document (http or https); with `cacheConfiguration` a local copy of it is tried
  /// first. Identifiers are kept unchanged; missing ones are written "(null)".
  static std::shared_ptr<ZtPortalData> initWithValues(const ZtString& configurationUrl,
                                                      bool cacheConfiguration,
                                                      const ZtString& customerId,
                                                      const ZtString& applicationId,
                                                      const ZtString& applicationVersion);

  ZtPortalData(Creation creation, ZtString configurationUrl, bool cacheConfiguration,
               ZtString customerId, ZtString applicationId, ZtString applicationVersion);
  ZtPortalData(const ZtPortalData&) = delete;
  ZtPortalData& operator=(const ZtPortalData&) = delete;
  ~ZtPortalData();

  /// How the requests of this document travel from now on, in place of the process-wide options
  /// (`ZtHost::setTransportOptions`), which those at its creation use. Returns
  /// `options.problem()`: if that is not empty, the options stay as they were.
  std::string setTransportOptions(ZtTransportOptions options);

  /// A new random UUID (RFC 4122) in upper case, without braces.
  static ZtString createUUID();

  /// Each adds a pool at the end and returns it for filling, or null if it could not be added. The
  /// document owns the pool.
  std::shared_ptr<ZtPortalPool> addPool(const ZtString& poolType, const ZtDate& timeStamp);
  std::shared_ptr<ZtPortalPoolComputerSystem> addPoolComputerSystem(const ZtDate& timeStamp);
  /// With `autoCheck` the pool is filled from the machine immediately, which runs subprocesses.
  std::shared_ptr<ZtPortalPoolComputerSystem> addPoolComputerSystemWithAutoCheck(
      const ZtDate& timeStamp, bool autoCheck);
  std::shared_ptr<ZtPortalPoolExecution> addPoolExecution(const ZtDate& timeStamp);
  std::shared_ptr<ZtPortalPoolDeinstallation> addPoolDeinstallation(const ZtDate& timeStamp);
  std::shared_ptr<ZtPortalPoolInitialization> addPoolInitialization(const ZtDate& timeStamp);
  std::shared_ptr<ZtPortalPoolDiagnose> addPoolDiagnose(const ZtDate& timeStamp);
  std::shared_ptr<ZtPortalPoolConnectionManager> addPoolConnectionManager(const ZtDate& timeStamp);

  /// The complete SOAP 1.1 request `postPoolDatas`; lines end with CR LF. Empty for a document
  /// without pools. In test mode the customer ID has the suffix "_Test" during the call. An empty
  /// customer ID deliberately stays "_Test" afterwards: servers rely on it. Empty also when there
  /// is not enough memory for the text.
  std::string getSoapString();
  /// The SOAP request, or without `soap` the same body as plain XML. `text` is ignored. Empty for
  /// a document without pools, if a pool throws a `ZtException` while it is written, or if there
  /// is not enough memory for the text.
  std::string generateXml(const ZtString& text, bool soap) const;

  /// Broadcasts the request, then posts it to the server. True if the server accepted it; otherwise
  /// the report is in the offline store, if it could be written there.
  bool reportToServer();
  /// Writes the request to the file at `path` (UTF-8), replacing its content. A new file gets the
  /// mode that the process's umask leaves; a link is followed, also one to a missing file. Always
  /// returns false, also after a success, so that no caller relies on the result.
  bool reportToFile(const ZtString& path);
  /// Writes the request to its file in the offline store, unless the file is already identical.
  /// `lastDelivery` says whether that succeeded.
  void saveReport();
  /// Sends the files of the store in the order in which the system lists them, removes each
  /// accepted one, and stops at the first that is not accepted. Always returns false, also if all
  /// were accepted; the store shows what is left.
  bool sendSavedReports();
  /// Sends one saved report; the file stays. True if the server accepted it; false also for a file
  /// that is not well-formed XML.
  bool sendSavedReport(const ZtString& path);

  /// The receipt of what this document sent or saved last: by `reportToServer`, `saveReport` or
  /// `sendSavedReport`, or the last file that `sendSavedReports` tried.
  ZtDelivery lastDelivery() const { return _delivery; }

  /// Path of this report's file in the store, whether the file exists or not. Creates the store's
  /// folder; missing if that fails.
  ZtString reportFile() const;
  /// The store's folder, which is created if it does not exist; missing if that fails.
  static ZtString reportFolder();

  /// The bundles of the running companion applications, one for each process. Only these can switch
  /// test mode on: processes of this user or root, in bundles that nobody else may change.
  static std::vector<std::string> runningCompanions();

  // The state of the document. URLs are empty until a configuration has been read.
  const ZtString& reportId() const { return _reportId; }
  const ZtString& machineId() const { return _machineId; }
  const ZtString& customerId() const { return _customerId; }
  const ZtString& applicationId() const { return _applicationId; }
  const ZtString& applicationVersion() const { return _applicationVersion; }
  const ZtString& reportUrl() const;
  const ZtString& reportTestUrl() const;
  const ZtString& configurationUrl() const;
  /// The version that the server last returned; missing before that.
  const ZtString& serverVersion() const;
  bool gotConfiguration() const;
  /// Whether the server returned its version.
  bool online() const;
  /// A snapshot of the pools, in the order in which they were added.
  std::vector<std::shared_ptr<ZtPortalPool>> pools() const { return _pools; }

 private:
  friend struct ZtTestAccess;

  // Request text. These throw std::bad_alloc, so that an empty text replaces no saved one.
  std::string _request();
  std::string _text(bool soap) const;

  // Pools.
  const std::shared_ptr<ZtPortalPool>& _pool(std::int32_t index) const;
  template <class Pool, class... Arguments>
  std::shared_ptr<Pool> _addPool(const Arguments&... arguments);

  // Configuration and transport.
  static ZtString _localSupportFolder();
  static ZtString _supportFolder(std::uint32_t domain, const ZtString& relativePath);
  ZtString _httpRequest(const ZtString& url, const ZtString& command);
  void _initHttp(const ZtString& url, bool cacheConfiguration);
  bool _getConfiguration(const ZtString& url, bool cacheConfiguration);
  ZtString _getReportUrl() const;
  ZtString _getServerVersion();

  // Delivery and offline store.
  bool _mutexEnabled() const;
  ZtString _getReportFile() const;
  static ZtString _getReportFolder();
  static void _notifyGhost(const ZtString& request);
  void _save();
  bool _isForbidden();
  ZtString _afterHook(std::string request);

  std::vector<std::shared_ptr<ZtPortalPool>> _pools;
  ZtString _reportId;
  ZtString _machineId;
  ZtString _customerId;
  ZtString _applicationId;
  ZtString _applicationVersion;
  std::unique_ptr<zt::ReportingServer> _server;
  bool _cacheConfiguration;
  ZtDelivery _delivery;
};
