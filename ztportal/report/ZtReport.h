// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtPortalPoolExecution.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/report/ZtApplicationIds.h"
#include "ztportal/report/ZtReportConstants.h"

/// One run of a host application, reported as a whole: the computer, the steps of the run and the
/// facts that the host recorded.
///
///     auto report = ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr);
///     if (!report) return;                       // no such customer
///     report->startReport("setup");
///     auto step = report->poolExecution()->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter);
///     step->setStepMessageCode("0");
///     (*report->installDataString())["EDITION"] = "Home";
///     (*report->installDataBOOL())["DESKTOP_ICON"] = "yes";
///     report->stopReport("finish");
///     bool accepted = report->sendReport(true);
///
/// Lifecycle:
/// - created for a customer: reads the configuration, asks the server for its version and takes the
///   inventory of the computer;
/// - started and stopped;
/// - sent or saved.
///
/// Other pools (a diagnose run, a connection manager's counters) are added to `data()`.
///
/// A report is used by one thread at a time. It prints nothing and starts no thread.
class ZT_EXPORT ZtReport {
  struct Creation {
    explicit Creation() = default;
  };

 public:
  using Facts = std::map<std::string, ZtString>;

  /// Creates a report for the customer with exactly the ID `customer`; null for an unknown
  /// customer, without any other effect, and if there is not enough memory. `guid` is the ID of the
  /// application; if it is missing or empty, the customer's default is used. The reported version
  /// is the host's (see `ZtHost`): "short version.build version".
  static std::shared_ptr<ZtReport> initWithCustomerAndGuid(const ZtString& customer,
                                                           const ZtString& guid);

  ZtReport(Creation creation, ZtString appId, ZtString customerId, ZtString url);
  ZtReport(const ZtReport&) = delete;
  ZtReport& operator=(const ZtReport&) = delete;
  ~ZtReport();

  /// Records that the run starts now at `startPoint`, a name of the host's choice. The first call
  /// adds the execution pool; later calls replace its start point and time. Has no effect if there
  /// is not enough memory.
  void startReport(const ZtString& startPoint);
  /// Records that the run ends now at `endPoint`. Has no effect before startReport().
  void stopReport(const ZtString& endPoint);

  /// Moves the installation facts into the execution pool. With `send`, then posts the report: true
  /// if the server accepted it, otherwise the report is in the offline store. Without `send`, saves
  /// the report there; the result is then always true, deliberately also if the file could not be
  /// written: hosts end their run with it. Facts of a run that was never started are dropped.
  bool sendReport(bool send);

  /// Sends the reports in the offline store; always false, like `ZtPortalData::sendSavedReports`.
  bool sendSavedReports();

  const ZtString& appId() const { return _appId; }
  void setAppId(ZtString value) { _appId = std::move(value); }
  const ZtString& customerId() const { return _customerId; }
  void setCustomerId(ZtString value) { _customerId = std::move(value); }
  const ZtString& url() const { return _url; }
  void setUrl(ZtString value) { _url = std::move(value); }
  /// The report document.
  std::shared_ptr<ZtPortalData> data() const { return _data; }
  void setData(std::shared_ptr<ZtPortalData> value) { _data = std::move(value); }
  /// The execution pool; null until the run is started.
  std::shared_ptr<ZtPortalPoolExecution> poolExecution() const { return _poolExecution; }
  void setPoolExecution(std::shared_ptr<ZtPortalPoolExecution> value) {
    _poolExecution = std::move(value);
  }
  /// Facts that the host wants to report as string fields.
  std::shared_ptr<Facts> installDataString() const { return _installDataString; }
  void setInstallDataString(std::shared_ptr<Facts> value) { _installDataString = std::move(value); }
  /// Facts that the host wants to report as boolean fields: "yes" in any letter case is true, every
  /// other value false.
  std::shared_ptr<Facts> installDataBOOL() const { return _installDataBOOL; }
  void setInstallDataBOOL(std::shared_ptr<Facts> value) { _installDataBOOL = std::move(value); }

 private:
  ZtString _url;
  ZtString _customerId;
  ZtString _appId;
  std::shared_ptr<Facts> _installDataBOOL = std::make_shared<Facts>();
  std::shared_ptr<Facts> _installDataString = std::make_shared<Facts>();
  std::shared_ptr<ZtPortalPoolExecution> _poolExecution;
  std::shared_ptr<ZtPortalData> _data;
};
