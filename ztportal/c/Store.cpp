// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <functional>
#include <system_error>

#include "ztportal/c/Call.h"

struct zt_store {
  ZtReportStore store;
  std::string folder = {};
  std::string customer = {};
  std::string problem = {};
  zt_send_result result = {};
};

namespace zt::c {

namespace {

static_assert(static_cast<zt_send_end>(ZtSendEnd::Done) == ZT_SEND_DONE &&
              static_cast<zt_send_end>(ZtSendEnd::NoConsent) == ZT_SEND_NO_CONSENT);

ZtReportStore& storeOf(zt_store* store) { return required(store, "store").store; }

/// Applies an operation of `ZtReportStore` to one report.
template <class Operation>
zt_status change(zt_store* store, const char* path, Operation operation) {
  return call([&] {
    const ZtReportStore& reports = storeOf(store);
    ZtSavedReport saved;
    saved.path = requiredText(path, "path");
    errno = 0;
    if (std::invoke(operation, reports, saved)) return;
    const int error = errno;
    fail(ZT_SYSTEM, saved.path, ": ",
         error != 0 ? std::generic_category().message(error) : "the operation failed");
  });
}

}  // namespace

SavedReport::SavedReport(const ZtSavedReport& saved)
    : zt_saved_report(), _id(saved.reportId.view()) {
  size = sizeof(zt_saved_report);
  path = saved.path.c_str();
  report_id = _id.c_str();
  bytes = saved.bytes;
  time = ZtDate(saved.time).milliseconds();
}

}  // namespace zt::c

zt_status zt_store_create(zt_store** store) {
  return zt::c::call([&] {
    zt::c::required(store, "store") = nullptr;
    errno = 0;
    auto made = std::make_unique<zt_store>();
    if (made->store.folder().isNull()) {
      zt::c::fail(ZT_SYSTEM, "the folder of the store cannot be created: ",
                  std::generic_category().message(errno));
    }
    made->folder = made->store.folder().view();
    *store = made.release();
  });
}

void zt_store_destroy(zt_store* store) { delete store; }

zt_status zt_store_folder(zt_store* store, const char** folder) {
  return zt::c::call([&] {
    zt::c::storeOf(store);
    zt::c::required(folder, "folder") = store->folder.c_str();
  });
}

zt_status zt_store_list(zt_store* store, zt_store_part part, zt_saved_report_callback callback,
                        void* user) {
  return zt::c::call([&] {
    const ZtReportStore& reports = zt::c::storeOf(store);
    if (callback == nullptr) zt::c::fail(ZT_BAD_ARGUMENT, "callback is NULL");
    if (part != ZT_REPORTS && part != ZT_UNSENDABLE) {
      zt::c::fail(ZT_BAD_ARGUMENT, "no such part of the store");
    }
    for (const ZtSavedReport& saved :
         part == ZT_REPORTS ? reports.list() : reports.listUnsendable()) {
      const zt::c::SavedReport report(saved);
      if (!callback(user, &report)) return;
    }
  });
}

zt_status zt_store_check(zt_store* store, const char* path, const char** customer_id,
                         const char** problem) {
  return zt::c::call([&] {
    zt::c::storeOf(store);
    ZtSavedReport saved;
    saved.path = zt::c::requiredText(path, "path");
    if (problem != nullptr) {
      store->problem = saved.problem();
      *problem = store->problem.c_str();
    }
    if (customer_id != nullptr) {
      const ZtString customer = saved.customerId();
      store->customer = customer.view();
      *customer_id = customer.isNull() ? nullptr : store->customer.c_str();
    }
  });
}

zt_status zt_store_remove(zt_store* store, const char* path) {
  return zt::c::change(store, path, &ZtReportStore::remove);
}

zt_status zt_store_set_aside(zt_store* store, const char* path) {
  return zt::c::change(store, path, &ZtReportStore::setAside);
}

zt_status zt_store_put_back(zt_store* store, const char* path) {
  return zt::c::change(store, path, &ZtReportStore::putBack);
}

zt_status zt_store_export(zt_store* store, const char* path, const char* target) {
  return zt::c::change(store, path, [&](const ZtReportStore& reports, const ZtSavedReport& saved) {
    return reports.exportTo(saved, std::string(zt::c::requiredText(target, "target")));
  });
}

zt_status zt_store_remove_all(zt_store* store, size_t* removed) {
  return zt::c::call([&] {
    const std::size_t count = zt::c::storeOf(store).removeAll();
    if (removed != nullptr) *removed = count;
  });
}

zt_status zt_store_set_limits(size_t reports, uint64_t bytes, int64_t age_s) {
  return zt::c::call([&] {
    ZtReportStore::setLimits({reports, bytes, zt::c::secondsOf(age_s, "age_s")});
  });
}

zt_status zt_store_send(zt_store* store, const zt_send_options* options,
                        const zt_send_result** result) {
  return zt::c::call([&] {
    if (result != nullptr) *result = nullptr;
    const ZtReportStore& reports = zt::c::storeOf(store);
    const zt_send_options known = zt::c::readStructure(options, "options");
    ZtSendOptions sending;
    sending.configurationUrl = zt::c::requiredText(known.configuration_url, "configuration_url");
    sending.transport = zt::c::transportOptionsOf(known.transport);
    sending.attempts = zt::c::attemptsOf(known.attempts, sending.attempts);
    sending.retry = known.retry;
    zt::c::readDuration(sending.retryDelay, known.retry_delay_ms, "retry_delay_ms");
    zt::c::readDuration(sending.longestDelay, known.longest_delay_ms, "longest_delay_ms");
    zt::c::readDuration(sending.budget, known.budget_ms, "budget_ms");
    if (known.progress != nullptr) {
      sending.progress = [&known](const ZtSavedReport& saved, const ZtDelivery& delivery) {
        const zt::c::SavedReport report(saved);
        const zt_delivery receipt = zt::c::deliveryOf(delivery);
        return known.progress(known.user, &report, &receipt);
      };
    }
    if (known.is_cancelled != nullptr) {
      sending.isCancelled = [&known] { return known.is_cancelled(known.user); };
    }
    const ZtSendResult sent = reports.send(sending);
    store->result.size = sizeof(zt_send_result);
    store->result.end = static_cast<zt_send_end>(sent.end);
    store->result.accepted = sent.accepted;
    store->result.set_aside = sent.setAside;
    store->result.removed = sent.removed;
    store->result.left = sent.left;
    store->result.retry_after_s = sent.retryAfter.count();
    if (result != nullptr) *result = &store->result;
    if (sent.end != ZtSendEnd::Done || sent.left != 0) {
      zt::c::fail(ZT_NOT_ACCEPTED, "reports are left in the store: ", std::to_string(sent.left));
    }
  });
}
