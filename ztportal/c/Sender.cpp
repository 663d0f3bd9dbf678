// SPDX-License-Identifier: Apache-2.0
#include "ztportal/background/ZtBackgroundSender.h"
#include "ztportal/c/Call.h"

struct zt_sender {
  explicit zt_sender(ZtBackgroundOptions options) : sender(std::move(options)) {}
  ZtBackgroundSender sender;
};

namespace zt::c {

namespace {

ZtBackgroundSender& senderOf(zt_sender* sender) { return required(sender, "sender").sender; }

void callBack(zt_receipt_callback callback, void* user, const ZtBackgroundReceipt& receipt) {
  const SavedReport report(receipt.report);
  const zt_delivery delivery = deliveryOf(receipt.delivery);
  callback(user, &report, &delivery);
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

zt_status zt_sender_create(const zt_sender_options* options, zt_sender** sender) {
  return zt::c::call([&] {
    zt::c::required(sender, "sender") = nullptr;
    const zt_sender_options known = zt::c::readStructure(options, "options");
    ZtBackgroundOptions sending;
    sending.configurationUrl = zt::c::requiredText(known.configuration_url, "configuration_url");
    sending.transport = zt::c::transportOptionsOf(known.transport);
    sending.attempts = zt::c::attemptsOf(known.attempts, sending.attempts);
    zt::c::readDuration(sending.retryDelay, known.retry_delay_ms, "retry_delay_ms");
    zt::c::readDuration(sending.longestDelay, known.longest_delay_ms, "longest_delay_ms");
    if (known.kept_receipts != 0) sending.keptReceipts = known.kept_receipts;
    if (known.on_receipt != nullptr) {
      sending.onReceipt = [callback = known.on_receipt,
                           user = known.user](const ZtBackgroundReceipt& receipt) {
        zt::c::callBack(callback, user, receipt);
      };
    }
    *sender = new zt_sender(std::move(sending));
  });
}

void zt_sender_destroy(zt_sender* sender) { delete sender; }

zt_status zt_sender_send(zt_sender* sender, zt_report* report) {
  return zt::c::call([&] {
    ZtPortalData& document = *zt::c::required(report, "report").document;
    if (!zt::c::senderOf(sender).send(document)) zt::c::expectSaved(document.lastDelivery());
  });
}

zt_status zt_sender_flush(zt_sender* sender, int64_t timeout_ms, size_t* left) {
  return zt::c::wait(sender, timeout_ms, left, &ZtBackgroundSender::flush);
}

zt_status zt_sender_stop(zt_sender* sender, int64_t timeout_ms, size_t* left) {
  return zt::c::wait(sender, timeout_ms, left, &ZtBackgroundSender::stop);
}

zt_status zt_sender_descriptor(const zt_sender* sender, int* descriptor) {
  return zt::c::call([&] {
    const int number = zt::c::required(sender, "sender").sender.descriptor();
    zt::c::required(descriptor, "descriptor") = number;
  });
}

zt_status zt_sender_receipts(zt_sender* sender, zt_receipt_callback callback, void* user) {
  return zt::c::call([&] {
    ZtBackgroundSender& background = zt::c::senderOf(sender);
    if (callback == nullptr) zt::c::fail(ZT_BAD_ARGUMENT, "callback is NULL");
    for (const ZtBackgroundReceipt& receipt : background.receipts()) {
      zt::c::callBack(callback, user, receipt);
    }
  });
}
