// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "tools/common/ReportReader.h"
#include "tools/common/Terminal.h"
#include "tools/ztreport/commands/Commands.h"
#include "tools/ztreport/commands/ReportTree.h"
#include "tools/ztreport/description/DescribedReport.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

/// The parts of a saved report's name, "{0E4D0F7C-...}.ztr", that may be omitted.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kStoredNames{
    {{"", ""}, {"", ".ztr"}, {"{", "}.ztr"}}};

bool exists(const std::string& path) {
  std::error_code none;
  return std::filesystem::exists(path, none);
}

/// Path of the report. A bare name that is not a file here may be one in the store.
std::string pathOf(const std::string& file) {
  if (file.empty() || file == "-" || file.find('/') != std::string::npos || exists(file)) {
    return file;
  }
  const ZtString store = ZtPortalData::reportFolder();
  if (store.isNull()) return file;
  for (const auto& [before, after] : kStoredNames) {
    std::string path(store.view());
    path.append("/").append(before).append(file).append(after);
    if (exists(path)) return path;
  }
  return file;
}

std::string shown(const reader::ParsedReport& report, bool json) {
  return json ? describedReport(report).text(2) + "\n"
              : reportTree(report, terminal::outputStyle());
}

}  // namespace

Exit show(const std::string& file, bool json) {
  const std::string text = readAll(pathOf(file));
  try {
    print(shown(reader::readReport(text), json));
  } catch (const reader::ReadError& error) {
    throw Failure(Exit::WrongInput, nameOf(file) + ": " + error.what());
  }
  return Exit::Done;
}

}  // namespace zt::tools
