// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cerrno>
#include <new>
#include <system_error>

#include "ztportal/base/ZtException.h"
#include "ztportal/c/Call.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/portal/ZtReportDescription.h"
#include "ztportal/report/Customers.h"
#include "ztportal/system/HostRules.h"

namespace zt::c {

namespace {

ZtPortalData& documentOf(zt_report* report) { return *required(report, "report").document; }

/// The values of `zt_report_get`.
struct ReportValue {
  std::string_view key;
  const ZtString& (ZtPortalData::*of)() const;
};
constexpr std::array<ReportValue, 9> kReportValues{{
    {"reportId", &ZtPortalData::reportId},
    {"machineId", &ZtPortalData::machineId},
    {"customerId", &ZtPortalData::customerId},
    {"applicationId", &ZtPortalData::applicationId},
    {"applicationVersion", &ZtPortalData::applicationVersion},
    {"reportUrl", &ZtPortalData::reportUrl},
    {"reportTestUrl", &ZtPortalData::reportTestUrl},
    {"configurationUrl", &ZtPortalData::configurationUrl},
    {"serverVersion", &ZtPortalData::serverVersion},
}};

ZtString valueOf(const ZtPortalData& document, std::string_view key) {
  if (key == "file") return document.reportFile();
  for (const ReportValue& row : kReportValues) {
    if (row.key == key) return (document.*row.of)();
  }
  fail(ZT_UNKNOWN_KEY, "a report has no \"", key, "\"");
}

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

// Not ZtPortalData::reportToFile, which deliberately does not tell whether it succeeded.
void write(ZtPortalData& document, const std::string& file) {
  if (consentIsRevoked()) fail(ZT_NOT_ACCEPTED, "the user has revoked the consent");
  std::string request = rendered(document, true);
  if (!passesRequestHook(request)) fail(ZT_NOT_ACCEPTED, "the host's hook dropped the report");
  if (!Platform::current().files().write(file, request)) {
    fail(ZT_SYSTEM, file, ": ", std::generic_category().message(errno));
  }
}

/// Throws `Failure` unless the report was accepted.
void expectAccepted(bool isAccepted, const ZtDelivery& delivery) {
  if (isAccepted) return;
  if (delivery.message.empty()) throw std::bad_alloc();
  if (delivery.saveError.empty()) fail(ZT_NOT_ACCEPTED, delivery.message);
  fail(ZT_NOT_ACCEPTED, delivery.message, " It is not saved: ", delivery.saveError);
}

void checkFlags(std::uint32_t flags, std::uint32_t known) {
  if ((flags & ~known) != 0) fail(ZT_BAD_ARGUMENT, "an unknown flag");
}

}  // namespace

zt_delivery deliveryOf(const ZtDelivery& delivery) {
  return {.size = sizeof(zt_delivery),
          .outcome = static_cast<zt_outcome>(delivery.outcome),
          .error = static_cast<zt_delivery_error>(delivery.error),
          .http_status = delivery.httpStatus,
          .save_error_number = delivery.saveErrorNumber,
          .message = delivery.message.c_str(),
          .url = delivery.url.c_str(),
          .saved_to = delivery.savedTo.c_str(),
          .save_error = delivery.saveError.c_str(),
          .request_bytes = delivery.requestBytes,
          .response_bytes = delivery.responseBytes,
          .lookup_us = delivery.lookupTime.count(),
          .connect_us = delivery.connectTime.count(),
          .tls_us = delivery.tlsTime.count(),
          .response_us = delivery.responseTime.count(),
          .total_us = delivery.totalTime.count(),
          .retry_after_s = delivery.retryAfter.count()};
}

void expectSaved(const ZtDelivery& delivery) {
  if (!delivery.savedTo.empty()) return;
  if (delivery.saveErrorNumber == ENOMEM) throw std::bad_alloc();
  if (delivery.saveErrorNumber == 0) fail(ZT_NOT_ACCEPTED, delivery.message);
  fail(ZT_SYSTEM, "the report cannot be saved: ", delivery.saveError);
}

}  // namespace zt::c

using zt::c::call;
using zt::c::documentOf;
using zt::c::required;
using zt::c::requiredText;

zt_status zt_report_create(const char* configuration_url, const char* customer_id,
                           const char* application_id, const char* application_version,
                           uint32_t flags, zt_report** report) {
  return call([&] {
    required(report, "report") = nullptr;
    zt::c::checkFlags(flags, ZT_CACHE_CONFIGURATION | ZT_OFFLINE);
    auto document = ZtPortalData::initWithValues(
        (flags & ZT_OFFLINE) != 0 ? nullptr : configuration_url,
        (flags & ZT_CACHE_CONFIGURATION) != 0, customer_id, application_id, application_version);
    if (document == nullptr) throw std::bad_alloc();
    *report = new zt_report{std::move(document)};
  });
}

zt_status zt_report_from_json(const char* json, size_t length, uint32_t flags, zt_report** report) {
  return call([&] {
    required(report, "report") = nullptr;
    zt::c::checkFlags(flags, ZT_OFFLINE);
    const auto description = zt::c::descriptionOf({&required(json, "json"), length});
    const ZtString& url = description.configurationUrl();
    const bool isOffline = (flags & ZT_OFFLINE) != 0 || url.empty();
    auto document = isOffline ? description.makeOffline() : description.makeOnline(url);
    *report = new zt_report{std::move(document)};
  });
}

zt_status zt_run_create(const char* customer_id, const char* application_id, zt_report** report) {
  return call([&] {
    required(report, "report") = nullptr;
    const std::string customer = requiredText(customer_id, "customer_id");
    if (!zt::isCustomer(customer)) {
      zt::c::fail(ZT_UNKNOWN_KEY, "no such customer: \"", customer, "\"");
    }
    auto run = ZtReport::initWithCustomerAndGuid(customer, application_id);
    if (run == nullptr) throw std::bad_alloc();
    *report = new zt_report{run->data(), run};
  });
}

void zt_report_destroy(zt_report* report) { delete report; }

zt_status zt_report_set_transport(zt_report* report, const zt_transport_options* options) {
  return call([&] {
    documentOf(report).setTransportOptions(
        zt::c::transportOptionsOf(options).value_or(ZtTransportOptions()));
  });
}

zt_status zt_report_get(zt_report* report, const char* key, const char** value) {
  return call([&] {
    const ZtPortalData& document = documentOf(report);
    const char*& returned = required(value, "value");
    returned = zt::c::keep(report->text, zt::c::valueOf(document, &required(key, "key")));
  });
}

zt_status zt_report_render(zt_report* report, bool soap, const char** text, size_t* length) {
  return call([&] {
    ZtPortalData& document = documentOf(report);
    required(text, "text");
    report->text = zt::c::rendered(document, soap);
    *text = report->text.c_str();
    if (length != nullptr) *length = report->text.size();
  });
}

zt_status zt_report_send(zt_report* report) {
  return call([&] {
    ZtPortalData& document = documentOf(report);
    const bool isAccepted =
        report->run != nullptr ? report->run->sendReport(true) : document.reportToServer();
    zt::c::expectAccepted(isAccepted, document.lastDelivery());
  });
}

zt_status zt_report_save(zt_report* report, const char* path) {
  return call([&] {
    ZtPortalData& document = documentOf(report);
    if (path != nullptr) return zt::c::write(document, path);
    if (report->run == nullptr) {
      document.saveReport();
    } else if (!report->run->sendReport(false)) {
      throw std::bad_alloc();
    }
    zt::c::expectSaved(document.lastDelivery());
  });
}

zt_status zt_report_resend(zt_report* report, const char* path) {
  return call([&] {
    ZtPortalData& document = documentOf(report);
    const bool isAccepted = document.sendSavedReport(requiredText(path, "path"));
    zt::c::expectAccepted(isAccepted, document.lastDelivery());
  });
}

zt_status zt_report_last_delivery(zt_report* report, const zt_delivery** delivery) {
  return call([&] {
    const ZtPortalData& document = documentOf(report);
    required(delivery, "delivery");
    report->receipt = document.lastDelivery();
    report->delivery = zt::c::deliveryOf(report->receipt);
    *delivery = &report->delivery;
  });
}
