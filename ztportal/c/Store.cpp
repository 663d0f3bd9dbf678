// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <functional>
#include <system_error>

#include "ztportal/background/ZtBackgroundSender.h"
#include "ztportal/c/Call.h"

struct zt_store {
  ZtReportStore store;
  std::string customer = {};
  std::string problem = {};
  zt_send_result result = {};
};

struct zt_sender {
  ZtBackgroundSender sender;
};

namespace zt::c {

namespace {

ZtReportStore& storeOf(zt_store* store) { return required(store, "store").store; }
ZtBackgroundSender& senderOf(zt_sender* sender) { return required(sender, "sender").sender; }

/// Calls `use` with the report as the host sees it.
template <class Use>
auto withSaved(const ZtSavedReport& saved, Use use) {
  const std::string id(saved.reportId);
  const zt_saved_report report{.size = sizeof(zt_saved_report),
                               .path = saved.path.c_str(),
                               .report_id = id.c_str(),
                               .bytes = saved.bytes,
                               .time = ZtDate(saved.time).milliseconds()};
  return use(&report);
}

void callBack(zt_receipt_callback callback, void* user, const ZtSavedReport& saved,
              const ZtDelivery& delivery) {
  const zt_delivery receipt = deliveryOf(delivery);
  withSaved(saved, [&](const zt_saved_report* report) { callback(user, report, &receipt); });
}

/// Zero leaves the default in `member`.
void readDuration(std::chrono::milliseconds& member, std::int64_t given, std::string_view name) {
  if (given != 0) member = durationOf(given, name);
}

/// The options that the store and a sender have in common, as `ZtSendOptions` or
/// `ZtBackgroundOptions`.
template <class Options>
Options optionsOf(const zt_send_options& given) {
  Options options;
  options.configurationUrl = &required(given.configuration_url, "configuration_url");
  options.transport = transportOptionsOf(given.transport);
  if (given.attempts < ZT_NO_LIMIT) fail(ZT_BAD_ARGUMENT, "attempts is negative");
  if (given.attempts > 0) options.attempts = static_cast<unsigned>(given.attempts);
  if (given.attempts == ZT_NO_LIMIT) options.attempts = 0;
  readDuration(options.retryDelay, given.retry_delay_ms, "retry_delay_ms");
  readDuration(options.longestDelay, given.longest_delay_ms, "longest_delay_ms");
  return options;
}

/// Applies an operation of `ZtReportStore` to one report.
template <class Operation>
zt_status change(zt_store* store, const char* path, Operation operation) {
  return call([&] {
    ZtSavedReport saved;
    saved.path = requiredText(path, "path");
    errno = 0;
    if (std::invoke(operation, storeOf(store), saved)) return;
    const int error = errno;
    fail(ZT_SYSTEM, saved.path, ": ",
         error != 0 ? std::generic_category().message(error) : "the operation failed");
  });
}

void checkPart(zt_store_part part) {
  if (part != ZT_REPORTS && part != ZT_UNSENDABLE) fail(ZT_BAD_ARGUMENT, "no such part");
}

using Wait = std::size_t (ZtBackgroundSender::*)(std::chrono::milliseconds timeout);
zt_status wait(zt_sender* sender, std::int64_t timeout, std::size_t* left, Wait operation) {
  return call([&] {
    const std::size_t count = (senderOf(sender).*operation)(durationOf(timeout, "timeout_ms"));
    if (left != nullptr) *left = count;
  });
}

}  // namespace

}  // namespace zt::c

using zt::c::call;
using zt::c::callBack;
using zt::c::change;
using zt::c::fail;
using zt::c::keep;
using zt::c::required;
using zt::c::requiredText;
using zt::c::senderOf;
using zt::c::storeOf;

zt_status zt_store_create(zt_store** store) {
  return call([&] {
    required(store, "store") = nullptr;
    errno = 0;
    auto made = std::make_unique<zt_store>();
    if (made->store.folder().isNull()) {
      fail(ZT_SYSTEM,
           "the folder of the store cannot be created: ", std::generic_category().message(errno));
    }
    *store = made.release();
  });
}

void zt_store_destroy(zt_store* store) { delete store; }

zt_status zt_store_list(zt_store* store, zt_store_part part, zt_saved_report_callback callback,
                        void* user) {
  return call([&] {
    const ZtReportStore& reports = storeOf(store);
    required(callback, "callback");
    zt::c::checkPart(part);
    for (const auto& saved : part == ZT_REPORTS ? reports.list() : reports.listUnsendable()) {
      const auto give = [&](const zt_saved_report* report) { return callback(user, report); };
      if (!zt::c::withSaved(saved, give)) return;
    }
  });
}

zt_status zt_store_check(zt_store* store, const char* path, const char** customer_id,
                         const char** problem) {
  return call([&] {
    storeOf(store);
    ZtSavedReport saved;
    saved.path = requiredText(path, "path");
    if (problem != nullptr) *problem = keep(store->problem, saved.problem());
    if (customer_id != nullptr) *customer_id = keep(store->customer, saved.customerId());
  });
}

zt_status zt_store_remove(zt_store* store, const char* path) {
  return change(store, path, &ZtReportStore::remove);
}

zt_status zt_store_move(zt_store* store, const char* path, zt_store_part part) {
  return change(store, path, [part](const ZtReportStore& reports, const auto& saved) {
    zt::c::checkPart(part);
    return part == ZT_REPORTS ? reports.putBack(saved) : reports.setAside(saved);
  });
}

zt_status zt_store_remove_all(zt_store* store, size_t* removed) {
  return call([&] {
    const std::size_t count = storeOf(store).removeAll();
    if (removed != nullptr) *removed = count;
  });
}

zt_status zt_store_set_limits(size_t reports, uint64_t bytes, int64_t age_s) {
  return call([&] {
    const auto age = zt::c::durationOf<std::chrono::seconds>(age_s, "age_s");
    ZtReportStore::setLimits({reports, bytes, age});
  });
}

zt_status zt_store_send(zt_store* store, const zt_send_options* options,
                        const zt_send_result** result) {
  return call([&] {
    if (result != nullptr) *result = nullptr;
    const ZtReportStore& reports = storeOf(store);
    const zt_send_options known = zt::c::readStructure(options, "options");
    auto sending = zt::c::optionsOf<ZtSendOptions>(known);
    sending.retry = known.retry;
    zt::c::readDuration(sending.budget, known.budget_ms, "budget_ms");
    if (known.on_receipt != nullptr) {
      sending.progress = [&known](const ZtSavedReport& saved, const ZtDelivery& delivery) {
        callBack(known.on_receipt, known.user, saved, delivery);
        return true;
      };
    }
    if (known.is_cancelled != nullptr) {
      sending.isCancelled = [&known] { return known.is_cancelled(known.user); };
    }
    const ZtSendResult sent = reports.send(sending);
    store->result = {.size = sizeof(zt_send_result),
                     .end = static_cast<zt_send_end>(sent.end),
                     .accepted = sent.accepted,
                     .set_aside = sent.setAside,
                     .removed = sent.removed,
                     .left = sent.left,
                     .retry_after_s = sent.retryAfter.count()};
    if (result != nullptr) *result = &store->result;
    if (sent.end != ZtSendEnd::Done || sent.left != 0) {
      fail(ZT_NOT_ACCEPTED, "reports are left in the store: ", std::to_string(sent.left));
    }
  });
}

// Senders.

zt_status zt_sender_create(const zt_send_options* options, zt_sender** sender) {
  return call([&] {
    required(sender, "sender") = nullptr;
    const zt_send_options known = zt::c::readStructure(options, "options");
    auto sending = zt::c::optionsOf<ZtBackgroundOptions>(known);
    if (known.kept_receipts != 0) sending.keptReceipts = known.kept_receipts;
    if (known.on_receipt != nullptr) {
      sending.onReceipt = [known](const ZtBackgroundReceipt& receipt) {
        callBack(known.on_receipt, known.user, receipt.report, receipt.delivery);
      };
    }
    *sender = new zt_sender{ZtBackgroundSender(std::move(sending))};
  });
}

void zt_sender_destroy(zt_sender* sender) { delete sender; }

zt_status zt_sender_send(zt_sender* sender, zt_report* report) {
  return call([&] {
    ZtPortalData& document = *required(report, "report").document;
    ZtBackgroundSender& background = senderOf(sender);
    if (report->run != nullptr) report->run->sendReport(false);  // which adds the facts
    if (!background.send(document)) zt::c::expectSaved(document.lastDelivery());
  });
}

zt_status zt_sender_flush(zt_sender* sender, int64_t timeout_ms, size_t* left) {
  return zt::c::wait(sender, timeout_ms, left, &ZtBackgroundSender::flush);
}

zt_status zt_sender_stop(zt_sender* sender, int64_t timeout_ms, size_t* left) {
  return zt::c::wait(sender, timeout_ms, left, &ZtBackgroundSender::stop);
}

zt_status zt_sender_descriptor(zt_sender* sender, int* descriptor) {
  return call([&] { required(descriptor, "descriptor") = senderOf(sender).descriptor(); });
}

zt_status zt_sender_receipts(zt_sender* sender, zt_receipt_callback callback, void* user) {
  return call([&] {
    required(callback, "callback");
    for (const ZtBackgroundReceipt& receipt : senderOf(sender).receipts()) {
      callBack(callback, user, receipt.report, receipt.delivery);
    }
  });
}
