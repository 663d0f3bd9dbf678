// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cerrno>
#include <new>
#include <system_error>

#include "ztportal/base/ZtException.h"
#include "ztportal/c/Call.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/portal/ZtReportDescription.h"
#include "ztportal/system/HostRules.h"

namespace zt::c {

namespace {

static_assert(static_cast<zt_outcome>(ZtDeliveryOutcome::NotSent) == ZT_OUTCOME_NOT_SENT &&
              static_cast<zt_outcome>(ZtDeliveryOutcome::Unreadable) == ZT_OUTCOME_UNREADABLE);
static_assert(static_cast<zt_delivery_error>(ZtDeliveryError::NoError) == ZT_ERROR_NONE &&
              static_cast<zt_delivery_error>(ZtDeliveryError::Memory) == ZT_ERROR_MEMORY);

ZtPortalData& documentOf(const zt_report* report) { return *required(report, "report").document; }

/// The values of `zt_report_get`.
struct ReportValue {
  std::string_view key;
  ZtString (*of)(const ZtPortalData& document);
};
template <const ZtString& (ZtPortalData::*kValue)() const>
ZtString reportValue(const ZtPortalData& document) {
  return (document.*kValue)();
}
constexpr std::array<ReportValue, 10> kReportValues{{
    {"reportId", reportValue<&ZtPortalData::reportId>},
    {"machineId", reportValue<&ZtPortalData::machineId>},
    {"customerId", reportValue<&ZtPortalData::customerId>},
    {"applicationId", reportValue<&ZtPortalData::applicationId>},
    {"applicationVersion", reportValue<&ZtPortalData::applicationVersion>},
    {"reportUrl", reportValue<&ZtPortalData::reportUrl>},
    {"reportTestUrl", reportValue<&ZtPortalData::reportTestUrl>},
    {"configurationUrl", reportValue<&ZtPortalData::configurationUrl>},
    {"serverVersion", reportValue<&ZtPortalData::serverVersion>},
    {"file", [](const ZtPortalData& document) { return document.reportFile(); }},
}};

ZtReportDescription descriptionOf(std::string_view json) try {
  return ZtReportDescription(json);
} catch (const ZtException& error) {
  fail(ZT_BAD_JSON, error.reason().view());
}

std::string rendered(ZtPortalData& document, bool soap) {
  std::string text = soap ? document.getSoapString() : document.generateXml(nullptr, false);
  // Only a report without pools has no text.
  if (text.empty() && !document.pools().empty()) throw std::bad_alloc();
  return text;
}

}  // namespace

zt_delivery deliveryOf(const ZtDelivery& delivery) {
  zt_delivery result{};
  result.size = sizeof(result);
  result.outcome = static_cast<zt_outcome>(delivery.outcome);
  result.error = static_cast<zt_delivery_error>(delivery.error);
  result.http_status = delivery.httpStatus;
  result.save_error_number = delivery.saveErrorNumber;
  result.message = delivery.message.c_str();
  result.url = delivery.url.c_str();
  result.saved_to = delivery.savedTo.c_str();
  result.save_error = delivery.saveError.c_str();
  result.request_bytes = delivery.requestBytes;
  result.response_bytes = delivery.responseBytes;
  result.lookup_us = delivery.lookupTime.count();
  result.connect_us = delivery.connectTime.count();
  result.tls_us = delivery.tlsTime.count();
  result.response_us = delivery.responseTime.count();
  result.total_us = delivery.totalTime.count();
  result.retry_after_s = delivery.retryAfter.count();
  return result;
}

void expectAccepted(bool isAccepted, const ZtDelivery& delivery) {
  if (isAccepted) return;
  if (delivery.saveError.empty()) fail(ZT_NOT_ACCEPTED, delivery.message);
  fail(ZT_NOT_ACCEPTED, delivery.message, " It is not saved: ", delivery.saveError);
}

void expectSaved(const ZtDelivery& delivery) {
  if (!delivery.savedTo.empty()) return;
  if (delivery.saveErrorNumber == ENOMEM) throw std::bad_alloc();
  if (delivery.saveErrorNumber == 0) fail(ZT_NOT_ACCEPTED, delivery.message);
  fail(ZT_SYSTEM, "the report cannot be saved: ", delivery.saveError);
}

}  // namespace zt::c

using zt::c::documentOf;

zt_status zt_report_create(const char* configuration_url, const char* customer_id,
                           const char* application_id, const char* application_version,
                           uint32_t flags, zt_report** report) {
  return zt::c::call([&] {
    zt::c::required(report, "report") = nullptr;
    if ((flags & ~(ZT_CACHE_CONFIGURATION | ZT_OFFLINE)) != 0) {
      zt::c::fail(ZT_BAD_ARGUMENT, "an unknown flag");
    }
    const bool isOffline = (flags & ZT_OFFLINE) != 0;
    auto document = ZtPortalData::initWithValues(isOffline ? nullptr : configuration_url,
                                                 (flags & ZT_CACHE_CONFIGURATION) != 0, customer_id,
                                                 application_id, application_version);
    if (document == nullptr) throw std::bad_alloc();
    *report = new zt_report{std::move(document)};
  });
}

zt_status zt_report_from_json(const char* json, size_t length, uint32_t flags, zt_report** report) {
  return zt::c::call([&] {
    zt::c::required(report, "report") = nullptr;
    if ((flags & ~ZT_OFFLINE) != 0) zt::c::fail(ZT_BAD_ARGUMENT, "an unknown flag");
    const std::string_view text(&zt::c::required(json, "json"), length);
    const auto description = zt::c::descriptionOf(text);
    const ZtString& url = description.configurationUrl();
    const bool isOffline = (flags & ZT_OFFLINE) != 0 || url.empty();
    auto document = isOffline ? description.makeOffline() : description.makeOnline(url);
    *report = new zt_report{std::move(document)};
  });
}

void zt_report_destroy(zt_report* report) { delete report; }

zt_status zt_report_set_transport(zt_report* report, const zt_transport_options* options) {
  return zt::c::call([&] {
    documentOf(report).setTransportOptions(
        zt::c::transportOptionsOf(options).value_or(ZtTransportOptions()));
  });
}

zt_status zt_report_get(zt_report* report, const char* key, const char** value) {
  return zt::c::call([&] {
    const ZtPortalData& document = documentOf(report);
    const std::string_view name = zt::c::requiredText(key, "key");
    zt::c::required(value, "value");
    for (const auto& row : zt::c::kReportValues) {
      if (row.key != name) continue;
      const ZtString text = row.of(document);
      report->text = text.view();
      *value = text.isNull() ? nullptr : report->text.c_str();
      return;
    }
    zt::c::fail(ZT_UNKNOWN_KEY, "a report has no \"", name, "\"");
  });
}

zt_status zt_report_is_online(const zt_report* report, bool* is_online) {
  return zt::c::call(
      [&] { zt::c::required(is_online, "is_online") = documentOf(report).online(); });
}

zt_status zt_report_render(zt_report* report, bool soap, const char** text, size_t* length) {
  return zt::c::call([&] {
    ZtPortalData& document = documentOf(report);
    zt::c::required(text, "text");
    report->text = zt::c::rendered(document, soap);
    *text = report->text.c_str();
    if (length != nullptr) *length = report->text.size();
  });
}

zt_status zt_report_send(zt_report* report) {
  return zt::c::call([&] {
    ZtPortalData& document = documentOf(report);
    const bool isAccepted = document.reportToServer();
    zt::c::expectAccepted(isAccepted, document.lastDelivery());
  });
}

zt_status zt_report_save(zt_report* report) {
  return zt::c::call([&] {
    ZtPortalData& document = documentOf(report);
    document.saveReport();
    zt::c::expectSaved(document.lastDelivery());
  });
}

// Not ZtPortalData::reportToFile, which deliberately does not tell whether it succeeded.
zt_status zt_report_write(zt_report* report, const char* path) {
  return zt::c::call([&] {
    ZtPortalData& document = documentOf(report);
    const std::string file(zt::c::requiredText(path, "path"));
    if (zt::consentIsRevoked()) zt::c::fail(ZT_NOT_ACCEPTED, "the user has revoked the consent");
    std::string request = zt::c::rendered(document, true);
    if (!zt::passesRequestHook(request)) {
      zt::c::fail(ZT_NOT_ACCEPTED, "the host's hook dropped the report");
    }
    if (!zt::Platform::current().files().write(file, request)) {
      zt::c::fail(ZT_SYSTEM, file, ": ", std::generic_category().message(errno));
    }
  });
}

zt_status zt_report_resend_all(zt_report* report) {
  return zt::c::call([&] { documentOf(report).sendSavedReports(); });
}

zt_status zt_report_resend(zt_report* report, const char* path) {
  return zt::c::call([&] {
    ZtPortalData& document = documentOf(report);
    const bool isAccepted = document.sendSavedReport(zt::c::requiredText(path, "path"));
    zt::c::expectAccepted(isAccepted, document.lastDelivery());
  });
}

zt_status zt_report_last_delivery(zt_report* report, const zt_delivery** delivery) {
  return zt::c::call([&] {
    const ZtPortalData& document = documentOf(report);
    zt::c::required(delivery, "delivery");
    report->receipt = document.lastDelivery();
    report->delivery = zt::c::deliveryOf(report->receipt);
    *delivery = &report->delivery;
  });
}
