// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <string_view>

#include "tools/common/Terminal.h"
#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/doctor/Checks.h"
#include "ztportal/platform/json/Json.h"

namespace zt::tools {

namespace {

struct Check {
  std::string_view name;
  Finding (*find)(Subject&);
};

constexpr std::array<Check, 16> kChecks{{
    {"configuration URL", checkConfigurationUrl},
    {"name lookup", checkNameLookup},
    {"proxy", checkProxy},
    {"configuration", checkConfiguration},
    {"report URL", checkReportUrl},
    {"report name lookup", checkReportNameLookup},
    {"report proxy", checkReportProxy},
    {"version answer", checkVersion},
    {"store folder", checkStoreFolder},
    {"store mode", checkStoreMode},
    {"free space", checkFreeSpace},
    {"saved reports", checkSavedReports},
    {"session bus", checkSessionBus},
    {"companion", checkCompanion},
    {"test mode", checkTestMode},
    {"helper programs", checkHelperPrograms},
}};

std::string_view nameOf(State state) {
  constexpr std::array<std::string_view, 3> kNames{"ok", "warning", "failed"};
  return kNames[static_cast<std::size_t>(state)];
}

void padTo(std::string& line, std::size_t column) { line.append(column - line.size(), ' '); }

std::string lineOf(const Check& check, const Finding& finding) {
  constexpr std::size_t kNameColumn = 9;
  constexpr std::size_t kReasonColumn = 28;
  std::string line(nameOf(finding.state));
  padTo(line, kNameColumn);
  line += check.name;
  padTo(line, kReasonColumn);
  std::string text = finding.reason;
  if (!finding.remedy.empty()) text += " -> " + finding.remedy;
  // URLs, responses and file names may contain control characters.
  return line + zt::terminal::terminalText(text) + "\n";
}

Json jsonOfFinding(const Check& check, const Finding& finding) {
  Json object{{"check", check.name}, {"state", nameOf(finding.state)}, {"reason", finding.reason}};
  if (!finding.remedy.empty()) object["remedy"] = finding.remedy;
  return object;
}

}  // namespace

Exit doctor(const std::string& configurationUrl, const std::string& appName, Output output) {
  Subject subject;
  subject.configurationUrl = configurationUrl;
  subject.appName = appName;
  Json checks = Json::array();
  Exit exit = Exit::Done;
  for (const Check& check : kChecks) {
    const Finding finding = check.find(subject);
    const bool isFailed = finding.state == State::Failed;
    if (isFailed) exit = Exit::NotAccepted;
    if (output == Output::Json) {
      checks.push_back(jsonOfFinding(check, finding));
    } else if (output == Output::Words || isFailed) {
      print(lineOf(check, finding));
    }
  }
  if (output == Output::Json) {
    const Json object{{"checks", checks}};
    print(object.text(2) + "\n");
  }
  return exit;
}

}  // namespace zt::tools
