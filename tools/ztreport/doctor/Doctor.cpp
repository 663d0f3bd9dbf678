#include "tools/ztreport/doctor/Doctor.h"

#include <array>
#include <limits>
#include <string_view>

#include "tools/common/Json.h"
#include "tools/common/Terminal.h"
#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/doctor/DesktopChecks.h"
#include "tools/ztreport/doctor/StoreChecks.h"
#include "tools/ztreport/doctor/WayChecks.h"

namespace zt::tools {

namespace {

struct Check {
  std::string_view name;
  Finding (*find)(Patient&);
};

constexpr std::array<Check, 13> kChecks{{
    {"configuration URL", checkConfigurationUrl},
    {"name lookup", checkNameLookup},
    {"proxy", checkProxy},
    {"configuration", checkConfiguration},
    {"report URL", checkReportUrl},
    {"version answer", checkVersion},
    {"store folder", checkStoreFolder},
    {"store mode", checkStoreMode},
    {"free space", checkFreeSpace},
    {"saved reports", checkSavedReports},
    {"session bus", checkSessionBus},
    {"companion", checkCompanion},
    {"test mode", checkTestMode},
}};

std::string_view nameOf(State state) {
  constexpr std::array<std::string_view, 3> kNames{"ok", "warning", "failed"};
  return kNames[static_cast<std::size_t>(state)];
}

void fillUp(std::string& line, std::size_t column) { line.append(column - line.size(), ' '); }

std::string lineOf(const Check& check, const Finding& finding) {
  constexpr std::size_t kNameColumn = 9;
  constexpr std::size_t kReasonColumn = 28;
  std::string line(nameOf(finding.state));
  fillUp(line, kNameColumn);
  line += check.name;
  fillUp(line, kReasonColumn);
  std::string text = finding.reason;
  if (!finding.remedy.empty()) text += " -> " + finding.remedy;
  // URLs, answers and names of files are other people's texts.
  return line + zt::terminal::terminalText(text, std::numeric_limits<std::size_t>::max()) + "\n";
}

Json jsonOf(const Check& check, const Finding& finding) {
  Json object{{"check", check.name}, {"state", nameOf(finding.state)}, {"reason", finding.reason}};
  if (!finding.remedy.empty()) object["remedy"] = finding.remedy;
  return object;
}

}  // namespace

Exit doctor(const std::string& configurationUrl, const std::string& appName, bool json) {
  Patient patient;
  patient.configurationUrl = configurationUrl;
  patient.appName = appName;
  Json checks = Json::array();
  Exit exit = Exit::Done;
  for (const Check& check : kChecks) {
    const Finding finding = check.find(patient);
    if (finding.state == State::Failed) exit = Exit::NotAccepted;
    if (json) {
      checks.push_back(jsonOf(check, finding));
    } else {
      print(lineOf(check, finding));
    }
  }
  if (json) {
    const Json object{{"checks", checks}};
    print(object.text(2) + "\n");
  }
  return exit;
}

}  // namespace zt::tools
