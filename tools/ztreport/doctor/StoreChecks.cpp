// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/commands/SavedReports.h"
#include "tools/ztreport/doctor/Checks.h"
#include "tools/ztreport/doctor/ShellWord.h"

namespace zt::tools {

namespace {

constexpr const char* kNoStore = "there is no store folder";

/// The user's data folder (XDG base directories).
std::string dataFolder() {
  const char* const data = ::getenv("XDG_DATA_HOME");
  if (data != nullptr && data[0] == '/') return data;
  const char* const home = ::getenv("HOME");
  return std::string(home != nullptr ? home : "the home folder") + "/.local/share";
}

/// Why no file can be written in `folder`, or empty.
std::string whyNotWritable(const std::string& folder) {
  std::string name = folder + "/.ztreport-doctor-XXXXXX";
  const int file = ::mkostemp(name.data(), O_CLOEXEC);
  if (file < 0) return std::strerror(errno);
  const bool isWritten = ::write(file, "x", 1) == 1;
  const bool isClosed = ::close(file) == 0;
  std::string reason = isWritten && isClosed ? "" : std::strerror(errno);
  ::unlink(name.c_str());
  return reason;
}

}  // namespace

Finding checkStoreFolder(Subject& subject) {
  const ZtString folder = ZtPortalData::reportFolder();
  if (folder.isNull()) {
    const std::string wanted = dataFolder() + "/Kelvane/" + subject.appName + "/reports";
    return failed(wanted + " cannot be created",
                  "check for a file or link of that name, the owner of the folders above it, and "
                  "XDG_DATA_HOME "
                  "or HOME");
  }
  subject.storeFolder = folder.view();
  const std::string reason = whyNotWritable(subject.storeFolder);
  if (!reason.empty()) {
    return failed(
        subject.storeFolder + " cannot be written to: " + reason,
        "make it writable for this user; otherwise reports that are not accepted are lost");
  }
  return ok(subject.storeFolder);
}

Finding checkStoreMode(Subject& subject) {
  if (subject.storeFolder.empty()) return skipped(kNoStore);
  struct stat status {};
  if (::stat(subject.storeFolder.c_str(), &status) != 0) {
    return failed(std::strerror(errno), "check " + subject.storeFolder);
  }
  std::array<char, 8> mode{};
  std::snprintf(mode.data(), mode.size(), "%04o", status.st_mode & 07777U);
  if ((status.st_mode & (S_IRWXG | S_IRWXO)) == 0) return ok(mode.data());
  return warning(std::string(mode.data()) +
                     ": other users can list the folder (only the owner can read the reports)",
                 "chmod 700 " + shellWord(subject.storeFolder));
}

Finding checkFreeSpace(Subject& subject) {
  // A typical report has 16 KiB.
  constexpr std::uint64_t kTooLittle = std::uint64_t{64} * 1024;
  constexpr std::uint64_t kLittle = std::uint64_t{16} * 1024 * 1024;
  if (subject.storeFolder.empty()) return skipped(kNoStore);
  struct statvfs space {};
  if (::statvfs(subject.storeFolder.c_str(), &space) != 0) {
    return failed(std::strerror(errno), "check " + subject.storeFolder);
  }
  constexpr const char* kRemedy = "free space on the file system of the store";
  if (space.f_files != 0 && space.f_favail == 0) {
    return failed("the file system has no free inodes", kRemedy);
  }
  const std::uint64_t free = std::uint64_t{space.f_bavail} * space.f_frsize;
  if (free < kTooLittle) return failed(sizeText(free) + ", too little for a report", kRemedy);
  if (free < kLittle) return warning("only " + sizeText(free), kRemedy);
  return ok(sizeText(free));
}

Finding checkSavedReports(Subject& subject) try {
  if (subject.storeFolder.empty()) return skipped(kNoStore);
  const std::vector<SavedReport> reports = savedReports(subject.storeFolder);
  if (reports.empty()) return ok("none");
  const auto isBroken = [](const SavedReport& report) { return !report.fault.empty(); };
  const auto broken = std::ranges::find_if(reports, isBroken);
  std::string reason = std::to_string(reports.size());
  if (broken == reports.end()) {
    std::chrono::seconds oldest{};
    for (const SavedReport& report : reports) {
      oldest = std::max(oldest, report.age.value_or(oldest));
    }
    return ok(reason + ", all can be sent, the oldest saved " + ageText(oldest) + " ago");
  }
  reason += ", of which " + std::to_string(std::ranges::count_if(reports, isBroken)) +
            " cannot be sent; " + broken->name + " blocks the " +
            std::to_string(reports.end() - broken - 1) + " after it: " + broken->fault;
  return failed(reason, "ztreport --app-name=" + shellWord(subject.appName) +
                            " store --set-aside=" + shellWord(broken->name));
} catch (const Failure& failure) {
  return failed(failure.what(), "make the store's folder readable for this user");
}

}  // namespace zt::tools
