#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/SavedReports.h"
#include "tools/ztreport/description/Description.h"

// The commands that make a report: render, send, save and run.

namespace zt::tools {

namespace {

Description describe(const std::string& file) try {
  return Description(readAll(file));
} catch (const JsonError& error) {
  throw Failure(Exit::WrongInput, nameOf(file) + ": " + error.what());
}

Description describeForDelivery(const std::string& file) {
  Description description = describe(file);
  if (description.hasPools()) return description;
  throw Failure(Exit::WrongInput,
                nameOf(file) + ": /pools: a report without a pool has no text to deliver");
}

std::string path(const ZtString& text) { return std::string(text.view()); }

/// The library does not report whether saving worked, so this compares the file with the text.
bool isSaved(ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return !file.isNull() && contentOf(path(file)) == document.getSoapString();
}

std::string whyNotSaved(const ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return file.isNull() ? kNoStoreFolder : path(file) + ": cannot be written";
}

/// The library does not tell a refusal from an unusable response or none at all.
std::string whyNotAccepted(const ZtPortalData& document) {
  const std::string url(document.configurationUrl().view());
  if (!document.gotConfiguration()) return "no configuration at " + url;
  if (!document.online()) return "no answer from " + std::string(document.reportUrl().view());
  return "no confirmation from " + std::string(document.reportUrl().view());
}

/// Prints whether the report was accepted, and returns the exit status. A report that was not
/// accepted must be in the store now; throws a `Failure` when it is not.
Exit tellDelivery(ZtPortalData& document, bool accepted) {
  if (accepted) {
    print("accepted: " + path(document.reportId()) + "\n");
    return Exit::Done;
  }
  const std::string reason = whyNotAccepted(document);
  if (!isSaved(document)) {
    throw Failure(Exit::MachineFailed,
                  "not accepted (" + reason + "), and not saved: " + whyNotSaved(document));
  }
  print("not accepted (" + reason + ")\nsaved: " + path(document.reportFile()) + "\n");
  return Exit::NotAccepted;
}

/// Prints the path of a saved report. Throws a `Failure` when its file is not there.
Exit tellSaved(ZtPortalData& document) {
  if (!isSaved(document)) throw Failure(Exit::MachineFailed, whyNotSaved(document));
  print(path(document.reportFile()) + "\n");
  return Exit::Done;
}

[[noreturn]] void fail(std::string_view option, const std::string& value,
                       const std::string& reason) {
  throw Failure(Exit::WrongInput, std::string(option) + " " + value + ": " + reason);
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

Exit render(const std::string& file, bool plain) {
  const auto document = describe(file).makeOffline();
  print(plain ? document->generateXml(nullptr, false) : document->getSoapString());
  return Exit::Done;
}

Exit send(const std::string& file, const std::string& configurationUrl) {
  const Description description = describeForDelivery(file);
  const ZtString url =
      configurationUrl.empty() ? description.configurationUrl() : ZtString(configurationUrl);
  if (url.empty()) {
    throw Failure(Exit::WrongInput,
                  nameOf(file) + ": /configurationUrl: absent, and no --config-url is given");
  }
  const auto document = description.makeOnline(url);
  return tellDelivery(*document, document->reportToServer());
}

Exit save(const std::string& file) {
  const auto document = describeForDelivery(file).makeOffline();
  storeFolder();
  document->saveReport();
  return tellSaved(*document);
}

ZtString configurationUrlOf(const std::string& customer) {
  const auto* const row = std::ranges::find_if(
      kCustomers, [&customer](const Customer& known) { return *known.id == customer; });
  if (row != kCustomers.end()) return *row->url;
  throw Failure(Exit::WrongInput, "--customer: no such customer: \"" + customer +
                                      "\"; it is one of " + customerNames());
}

std::string customerNames() {
  std::string names;
  for (const Customer& row : kCustomers) {
    names.append(names.empty() ? "" : ", ").append(row.id->view());
  }
  return names;
}

Exit run(const RunOptions& options) {
  configurationUrlOf(options.customer);  // throws for an unknown customer
  ZtReport::Facts facts = readFacts("--fact", options.facts);
  ZtReport::Facts flags = readFlags(options.flags);
  const std::vector<Step> steps = readSteps(options.steps);

  const auto report = ZtReport::initWithCustomerAndGuid(options.customer, options.applicationId);
  report->startReport(options.startPoint);
  for (const Step& step : steps) {
    report->poolExecution()->addStep(ZtDate::now(), step.name, step.type);
  }
  *report->installDataString() = std::move(facts);
  *report->installDataBOOL() = std::move(flags);
  report->stopReport(options.endPoint);

  if (!options.save) return tellDelivery(*report->data(), report->sendReport(true));
  storeFolder();
  report->sendReport(false);
  return tellSaved(*report->data());
}

}  // namespace zt::tools
