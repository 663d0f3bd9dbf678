// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

using Finished = ProgramResult;

/// A configuration URL at which no server listens.
inline constexpr const char* kUnreachable = "http://127.0.0.1:1/kelvane.xml";

/// A program that succeeded, with this output.
inline Finished done(std::string output) { return {0, std::move(output), ""}; }
/// ztreport failed with this message.
inline Finished refused(int status, const std::string& message) {
  return {status, "", "ztreport: " + message + "\n"};
}

inline std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The text between the start tag `tag` and the next "<".
inline std::string valueOf(std::string_view text, std::string_view tag) {
  const std::size_t start = text.find(tag);
  if (start == std::string_view::npos) throw std::runtime_error("no " + std::string(tag));
  const std::size_t value = text.find('>', start) + 1;
  return std::string(text.substr(value, text.find('<', value) - value));
}

inline std::string reportIdOf(std::string_view text) { return valueOf(text, "<ReportID"); }

/// A report's text with a fixed ID.
inline std::string withoutReportId(std::string text) {
  const std::string id = reportIdOf(text);
  return text.replace(text.find(id), id.size(), "{ID}");
}

/// Runs ztreport for a new user: time zone UTC, C locale, no session bus, an empty store.
class ReportProgram {
 public:
  std::string write(std::string_view name, std::string_view content) const {
    return _folder.write(name, content);
  }
  std::string path(std::string_view name) const { return _folder.path(name); }
  const std::string& folder() const { return _folder.path(); }

  /// `options` name files; the environment is this one's.
  Finished run(const std::vector<std::string>& arguments, SubprocessOptions options = {}) const {
    options.environment = environment();
    return runProgram(paths::kReportProgram, arguments, std::move(options));
  }

  /// Sets "NAME=VALUE" in the program's environment.
  void setVariable(std::string variable) {
    _variables.insert(_variables.begin(), std::move(variable));
  }

  /// The program's whole environment.
  std::vector<std::string> environment() const {
    std::vector<std::string> all{"TZ=UTC", "LC_ALL=C", "HOME=" + _folder.path("home"),
                                 "XDG_DATA_HOME=" + _dataFolder};
    all.insert(all.begin(), _variables.begin(), _variables.end());
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS",
                             "LD_LIBRARY_PATH", "GCOV_PREFIX"}) {
      if (const char* value = ::getenv(name)) all.push_back(name + std::string("=") + value);
    }
    return all;
  }

  void setDataFolder(std::string path) { _dataFolder = std::move(path); }
  std::string storeFolder(const std::string& appName = "ztreport") const {
    return _dataFolder + "/Kelvane/" + appName + "/reports";
  }
  /// Names of the files in a store, sorted.
  std::vector<std::string> stored(const std::string& appName = "ztreport") const {
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(storeFolder(appName), none)) {
      names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
  }
  /// Number of the files in the data folder.
  std::size_t fileCount() const {
    std::error_code none;
    std::filesystem::recursive_directory_iterator entries(_dataFolder, none);
    return static_cast<std::size_t>(std::count_if(
        begin(entries), end(entries), [](const auto& entry) { return entry.is_regular_file(); }));
  }

 private:
  TemporaryFolder _folder;
  std::string _dataFolder = _folder.path("data");
  std::vector<std::string> _variables;
};

/// A description of one pool without an array: the text of an array is not well-formed XML, and
/// cannot be sent again.
inline std::string describedFlatReport() {
  return R"({"customerId": "Kelvane", "pools": [
    {"kind": "generic", "poolType": "CUSTOM", "timeStamp": "2026-11-21T12:00:00.123Z",
     "fields": [{"name": "EDITION", "type": "string", "value": "Home"}]}]})";
}

/// A description of one generic pool with an array. `more` is inserted at the top level.
inline std::string describedReport(const std::string& configurationUrl = "",
                                   const std::string& more = "") {
  const std::string url =
      configurationUrl.empty() ? "" : R"("configurationUrl": ")" + configurationUrl + "\", ";
  return "{" + url + more + R"("customerId": "Kelvane",
    "applicationId": "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "applicationVersion": "2.1.77",
    "pools": [{"kind": "generic", "poolType": "CUSTOM", "timeStamp": "2026-11-21T12:00:00.123Z",
               "fields": [{"name": "LIST", "type": "array", "fields": [
                            {"name": "COUNT", "type": "integer", "value": 7}]},
                          {"name": "EDITION", "type": "string", "value": "H\u00f6me"}]}]})";
}

}  // namespace zt::test
