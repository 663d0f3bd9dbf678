// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>
#include <string_view>

#include "tools/ztreport/commands/Commands.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/json/Json.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

Json jsonOfText(const ZtString& text) { return text.isNull() ? Json(nullptr) : Json(text.view()); }

/// The name of a language, or its number when it has none.
Json jsonOfLanguage(std::uint64_t language) {
  const ZtString name = ZtPortalDef::languageToString(language);
  return name.empty() ? Json(language) : Json(name.view());
}

template <class List>
Json jsonOfPrograms(const List& programs) {
  Json list = Json::array();
  for (const auto& program : programs) {
    list.push_back({{"appName", jsonOfText(program->appName())},
                    {"appVersion", jsonOfText(program->appVersion())},
                    {"isStandard", program->isStandard() == 1}});
  }
  return list;
}

std::string asJson(const ZtPortalPoolComputerSystem& computer) {
  const Json object{{"kind", "computerSystem"},
                    {"osName", jsonOfText(computer.osName())},
                    {"osVersion", jsonOfText(computer.osVersion())},
                    {"servicePack", computer.servicePack()},
                    {"osLanguage", jsonOfLanguage(computer.osLanguage())},
                    {"userLanguage", jsonOfLanguage(computer.userLanguage())},
                    {"isAdmin", computer.isAdmin() == 1},
                    {"emailClients", jsonOfPrograms(*computer.emailClients())},
                    {"browsers", jsonOfPrograms(*computer.browsers())}};
  // Names of applications may contain bytes that are not UTF-8.
  return object.text(2) + "\n";
}

void addLine(std::string& text, std::string_view label, const std::string& value) {
  constexpr std::size_t kValueColumn = 16;
  text += label;
  text.append(kValueColumn - label.size(), ' ');
  text += value;
  text += '\n';
}

/// Control characters could change the terminal.
std::string printable(const ZtString& text) {
  if (text.isNull()) return "(unknown)";
  std::string result(text.view());
  std::replace_if(result.begin(), result.end(), isControl, '?');
  return result;
}

std::string languageText(std::uint64_t language) {
  const ZtString name = ZtPortalDef::languageToString(language);
  return name.empty() ? "number " + std::to_string(language) : std::string(name.view());
}

template <class List>
void addPrograms(std::string& text, std::string_view label, const List& programs) {
  for (const auto& program : programs) {
    std::string line = printable(program->appName());
    line.append(" ").append(printable(program->appVersion()));
    if (program->isStandard() == 1) line += " (default)";
    addLine(text, label, line);
    label = "";
  }
  if (programs.empty()) addLine(text, label, "none of the known ones");
}

std::string asLines(const ZtPortalPoolComputerSystem& computer) {
  std::string text;
  addLine(text, "system", printable(computer.osVersion()));
  addLine(text, "service pack", std::to_string(computer.servicePack()));
  addLine(text, "language", languageText(computer.userLanguage()));
  addLine(text, "administrator", computer.isAdmin() == 1 ? "yes" : "no");
  addPrograms(text, "e-mail clients", *computer.emailClients());
  addPrograms(text, "browsers", *computer.browsers());
  return text;
}

}  // namespace

Exit probe(bool json) {
  requireConsent();
  const auto computer = ZtPortalPoolComputerSystem::initWithValues(ZtDate::now(), true);
  print(json ? asJson(*computer) : asLines(*computer));
  return Exit::Done;
}

}  // namespace zt::tools
