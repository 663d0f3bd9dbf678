// SPDX-License-Identifier: Apache-2.0
#include <new>

#include "ztportal/c/Call.h"
#include "ztportal/c/Tables.h"
#include "ztportal/report/Customers.h"
#include "ztportal/report/ZtReport.h"

struct zt_run {
  std::shared_ptr<ZtReport> report;
  zt_report handle;
  zt_pool execution = {};  ///< without an object until the run is started
};

namespace {

ZtReport& runOf(zt_run* run) { return *zt::c::required(run, "run").report; }

}  // namespace

zt_status zt_run_create(const char* customer_id, const char* application_id, zt_run** run) {
  return zt::c::call([&] {
    zt::c::required(run, "run") = nullptr;
    const char* const customer = &zt::c::required(customer_id, "customer_id");
    if (!zt::isCustomer(customer)) {
      zt::c::fail(ZT_UNKNOWN_KEY, "no such customer: \"", customer, "\"");
    }
    auto report = ZtReport::initWithCustomerAndGuid(customer, application_id);
    if (report == nullptr) throw std::bad_alloc();
    auto document = report->data();
    *run = new zt_run{std::move(report), {std::move(document)}};
  });
}

void zt_run_destroy(zt_run* run) { delete run; }

zt_status zt_run_start(zt_run* run, const char* start_point) {
  return zt::c::call([&] {
    runOf(run).startReport(start_point);
    if (runOf(run).poolExecution() == nullptr) throw std::bad_alloc();
  });
}

zt_status zt_run_stop(zt_run* run, const char* end_point) {
  return zt::c::call([&] { runOf(run).stopReport(end_point); });
}

zt_status zt_run_set_string(zt_run* run, const char* name, const char* value) {
  return zt::c::call([&] {
    ZtReport& report = runOf(run);
    const std::string fact(zt::c::requiredText(name, "name"));
    report.installDataString()->insert_or_assign(fact, value);
  });
}

zt_status zt_run_set_boolean(zt_run* run, const char* name, bool value) {
  return zt::c::call([&] {
    ZtReport& report = runOf(run);
    const std::string fact(zt::c::requiredText(name, "name"));
    report.installDataBOOL()->insert_or_assign(fact, value ? "yes" : "no");
  });
}

zt_status zt_run_report(zt_run* run, zt_report** report) {
  return zt::c::call([&] {
    zt::c::required(report, "report") = nullptr;
    *report = &zt::c::required(run, "run").handle;
  });
}

zt_status zt_run_pool(zt_run* run, zt_pool** pool) {
  return zt::c::call([&] {
    zt::c::required(pool, "pool") = nullptr;
    const auto execution = runOf(run).poolExecution();
    if (execution == nullptr) zt::c::fail(ZT_FAILED, "the run has not been started");
    run->execution.report = &run->handle;
    run->execution.table = &zt::c::tableOfKind(zt::Fields<ZtPortalPoolExecution>::kKind);
    run->execution.pool = execution.get();
    run->execution.object = execution.get();
    *pool = &run->execution;
  });
}

zt_status zt_run_send(zt_run* run, bool send) {
  return zt::c::call([&] {
    const bool isAccepted = runOf(run).sendReport(send);
    const ZtDelivery delivery = run->handle.document->lastDelivery();
    if (!isAccepted && delivery.message.empty()) throw std::bad_alloc();
    if (send) {
      zt::c::expectAccepted(isAccepted, delivery);
    } else {
      zt::c::expectSaved(delivery);
    }
  });
}
