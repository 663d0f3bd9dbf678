#include "tools/ztreport/commands/Run.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "tools/ztreport/commands/Customers.h"
#include "tools/ztreport/commands/Delivery.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

[[noreturn]] void fail(std::string_view option, const std::string& value,
                       const std::string& reason) {
  throw Failure(Exit::WrongInput, std::string(option) + " " + value + ": " + reason);
}

/// The facts by their names; no name may be empty or come twice.
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

}  // namespace

Exit run(const RunOptions& options) {
  configurationUrlOf(options.customer);  // names the customers that there are
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
