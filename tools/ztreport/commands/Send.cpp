// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/common/LineCursor.h"
#include "tools/common/Usage.h"
#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/Delivery.h"
#include "tools/ztreport/commands/SavedReports.h"
#include "tools/ztreport/network/WebAddress.h"
#include "ztportal/portal/ZtReportDescription.h"

// The commands that make a report: render, send, save and run.

namespace zt::tools {

namespace {

ZtReportDescription describe(const std::string& file) try {
  return ZtReportDescription(readAll(file));
} catch (const ZtException& error) {
  throw Failure(Exit::WrongInput, nameOf(file) + ": " + error.what());
}

ZtReportDescription describeForDelivery(const std::string& file) {
  ZtReportDescription description = describe(file);
  if (description.hasPools()) return description;
  throw Failure(Exit::WrongInput,
                nameOf(file) + ": /pools: a report without a pool has no text to deliver");
}

std::string whyNotSaved(const ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return file.isNull() ? kNoStoreFolder : std::string(file) + ": cannot be written";
}

bool isMalformed(const std::string& element) { return ZtXMLDocument::parse(element) == nullptr; }

/// The names and values that keep the text of a report from being well-formed XML. The end tags of
/// generic arrays, which no parser accepts either, do not count.
std::vector<std::string> malformedValues(const reader::ParsedReport& report) {
  std::vector<std::string> places;
  const auto check = [&places](std::string_view text, const std::string& place) {
    if (isMalformed("<a>" + std::string(text) + "</a>")) places.push_back(place);
  };
  check(report.customerId, "the value of CustomerID");
  check(report.applicationId, "the value of ApplicationID");
  check(report.applicationVersion, "the value of ApplicationVersion");
  for (const reader::Pool& pool : report.pools) {
    const std::string type = reader::quoted(pool.type);
    const std::string inPool = " in the pool " + std::string(pool.type);
    if (isMalformed("<a b=" + type + "/>")) places.push_back("the pool type " + type);
    for (std::size_t i = pool.begin; i < pool.end; ++i) {
      const reader::Field& field = report.fields[i];
      check(field.name, "the name " + reader::quoted(field.name) + inPool);
      check(field.value, "the value of " + std::string(field.name) + inPool);
    }
  }
  return places;
}

void warnOfMalformedValues(ZtPortalData& document, Output output) {
  if (output == Output::Quiet) return;
  const std::string report = document.getSoapString();
  const auto [parsed, fault] = reader::readReportUpToFault(report);
  const std::vector<std::string> values = malformedValues(parsed);
  if (values.empty() && !fault) return;
  std::string first = values.empty() ? std::string("a value, ") + fault->what() : values.front();
  if (values.size() > 1) first += " (and " + std::to_string(values.size() - 1) + " more)";
  complain("warning: the report is not well-formed XML because of " + first +
           ", so it can never be sent from the store; --escape prevents that");
}

/// Tells whether the report was accepted, and returns the exit status. A report that was not
/// accepted must be in the store now; throws a `Failure` when it is not.
Exit tellDelivery(ZtPortalData& document, bool accepted, Output output) {
  warnOfMalformedValues(document, output);
  const std::string id(document.reportId());
  const auto tellResult = [&](const std::string& words, Json object) {
    if (output == Output::Receipts) object["delivery"] = jsonOfDelivery(document.lastDelivery());
    tell(output, words, object);
  };
  if (accepted) {
    tellResult("accepted: " + id, {{"accepted", true}, {"reportId", id}});
    return Exit::Done;
  }
  const std::string file = document.lastDelivery().savedTo;
  const std::string reason = whyNotAccepted(document);
  if (file.empty()) {
    throw Failure(Exit::MachineFailed,
                  "not accepted (" + reason + "), and not saved: " + whyNotSaved(document));
  }
  complain("not accepted: " + reason);
  tellResult("saved: " + file,
             {{"accepted", false}, {"reportId", id}, {"reason", reason}, {"file", file}});
  return Exit::NotAccepted;
}

/// Tells the path of a saved report. Throws a `Failure` when its file is not there.
Exit tellSaved(ZtPortalData& document, Output output) {
  warnOfMalformedValues(document, output);
  const std::string file = document.lastDelivery().savedTo;
  if (file.empty()) throw Failure(Exit::MachineFailed, whyNotSaved(document));
  tell(output, file, {{"reportId", std::string(document.reportId())}, {"file", file}});
  return Exit::Done;
}

[[noreturn]] void fail(std::string_view option, const std::string& value,
                       const std::string& reason) {
  throw WrongUsage(std::string(option) + " " + value + ": " + reason);
}

/// The facts by name. A name must not be empty or occur twice.
ZtReport::Facts readFacts(std::string_view option, const std::vector<std::string>& texts) {
  ZtReport::Facts facts;
  for (const std::string& text : texts) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos || sign == 0) fail(option, text, "expected NAME=VALUE");
    if (!facts.emplace(text.substr(0, sign), text.substr(sign + 1)).second) {
      fail(option, text, "a second value of this name");
    }
  }
  return facts;
}

ZtReport::Facts readFlags(const std::vector<std::string>& texts) {
  ZtReport::Facts flags = readFacts("--flag", texts);
  for (const auto& [name, value] : flags) {
    if (value != "yes" && value != "no") {
      fail("--flag", name + "=" + std::string(value.view()), "expected NAME=yes or NAME=no");
    }
  }
  return flags;
}

struct Step {
  std::uint64_t type;
  std::string name;
};

std::vector<Step> readSteps(const std::vector<std::string>& texts) {
  std::vector<Step> steps;
  for (const std::string& text : texts) {
    const std::size_t colon = text.find(':');
    const std::string_view typeName = std::string_view(text).substr(0, colon);
    std::string known;
    std::optional<std::uint64_t> type;
    for (std::uint64_t number = ZtPortalStepEnter; number <= ZtPortalStepError; ++number) {
      const ZtString candidate = ZtPortalDef::stepTypeToString(number);
      if (candidate == typeName) type = number;
      known += (known.empty() ? "" : ", ") + std::string(candidate.view());
    }
    if (!type || colon == std::string::npos) {
      fail("--step", text, "expected TYPE:NAME, the type one of " + known);
    }
    steps.push_back({*type, text.substr(colon + 1)});
  }
  return steps;
}

struct Customer {
  const ZtString* id;
  const ZtString* url;
};

constexpr std::array<Customer, 5> kCustomers{{
    {&REP_CUSTOMERID_ZT, &REP_URL_ZT},
    {&REP_CUSTOMERID_NORVANTEL, &REP_URL_NORVANTEL},
    {&REP_CUSTOMERID_BRISALINK, &REP_URL_BRISALINK},
    {&REP_CUSTOMERID_CAVOMEDIA, &REP_URL_CAVOMEDIA},
    {&REP_CUSTOMERID_QUILLNET, &REP_URL_QUILLNET},
}};

}  // namespace

Exit render(const std::string& file, bool plain, Output output) {
  const auto document = describe(file).makeOffline();
  const std::string request =
      plain ? document->generateXml(nullptr, false) : document->getSoapString();
  if (output == Output::Words) {
    print(request);
  } else {
    tell(output, "", {{"reportId", std::string(document->reportId())}, {"text", request}});
  }
  return Exit::Done;
}

Exit send(const std::string& file, const std::optional<std::string>& configurationUrl,
          Output output) {
  if (configurationUrl) checkConfigurationUrl(*configurationUrl);
  requireConsent();
  const ZtReportDescription description = describeForDelivery(file);
  const std::string url =
      configurationUrl ? *configurationUrl : std::string(description.configurationUrl());
  if (!webAddress(url)) {
    throw Failure(Exit::WrongInput,
                  nameOf(file) + ": /configurationUrl: " +
                      (url.empty() ? "absent, and no --config-url is given"
                                   : shownUrl(url) + " is not an http or https URL"));
  }
  const auto document = description.makeOnline(url);
  return tellDelivery(*document, document->reportToServer(), output);
}

Exit save(const std::string& file, Output output) {
  requireConsent();
  const auto document = describeForDelivery(file).makeOffline();
  storeFolder();
  document->saveReport();
  return tellSaved(*document, output);
}

ZtString configurationUrlOf(const std::string& customer) {
  const auto* const row = std::ranges::find_if(
      kCustomers, [&customer](const Customer& known) { return *known.id == customer; });
  if (row != kCustomers.end()) return *row->url;
  std::vector<std::string> known;
  known.reserve(kCustomers.size());
  for (const Customer& candidate : kCustomers) known.emplace_back(*candidate.id);
  throw WrongUsage("--customer: no such customer: \"" + customer + "\"" +
                   didYouMean(customer, known) + "; it is one of " + customerNames());
}

std::string customerNames() {
  std::string names;
  for (const Customer& row : kCustomers) {
    names.append(names.empty() ? "" : ", ").append(row.id->view());
  }
  return names;
}

Exit run(const RunOptions& options, Output output) {
  configurationUrlOf(options.customer);  // throws for an unknown customer
  ZtReport::Facts facts = readFacts("--fact", options.facts);
  ZtReport::Facts flags = readFlags(options.flags);
  const std::vector<Step> steps = readSteps(options.steps);
  requireConsent();

  const auto report = ZtReport::initWithCustomerAndGuid(options.customer, options.applicationId);
  report->startReport(options.startPoint);
  for (const Step& step : steps) {
    report->poolExecution()->addStep(ZtDate::now(), step.name, step.type);
  }
  *report->installDataString() = std::move(facts);
  *report->installDataBOOL() = std::move(flags);
  report->stopReport(options.endPoint);

  if (!options.save) return tellDelivery(*report->data(), report->sendReport(true), output);
  storeFolder();
  report->sendReport(false);
  return tellSaved(*report->data(), output);
}

}  // namespace zt::tools
