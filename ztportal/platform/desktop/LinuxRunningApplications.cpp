// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/LinuxRunningApplications.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Free.h"
#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/plist/Bundle.h"

namespace zt {

namespace {

using OpenFolder = std::unique_ptr<DIR, Free<::closedir>>;

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept {
    return std::hash<std::string_view>{}(text);
  }
};
template <class Value>
using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

using PathBuffer = std::array<char, PATH_MAX>;

bool isProcessNumber(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(),
                                      [](char digit) { return digit >= '0' && digit <= '9'; });
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

std::string_view folderOf(std::string_view path) { return path.substr(0, path.rfind('/')); }

/// Whether the program `path` runs a file that its command line names.
bool isInterpreter(std::string_view path) {
  constexpr std::array<std::string_view, 20> kInterpreters = {
      "ash",  "bash",   "busybox", "dash", "electron", "gjs",  "java", "ksh",   "lua",  "mono",
      "node", "nodejs", "perl",    "php",  "python",   "ruby", "sh",   "tclsh", "wish", "zsh"};
  std::string_view name = path.substr(path.rfind('/') + 1);
  if (name.starts_with("ld-linux")) return true;
  name = name.substr(0, name.find_last_not_of("0123456789.-") + 1);  // "python3.11"
  return std::find(kInterpreters.begin(), kInterpreters.end(), name) != kInterpreters.end();
}

/// Removes the next word from a command line.
std::string_view takeWord(std::string_view& line) { return takeLine(line, '\0'); }

/// A process by the files of its folder in the process table.
class Process {
 public:
  Process(int table, const char* number) : _table(table), _number(number) {}

  /// The target of the link to its executable, in `buffer`; empty if it cannot be read completely.
  std::string_view executable(PathBuffer& buffer) const { return target("/exe", buffer); }

  /// The first word of its command line.
  std::string command() const {
    const std::string line = start("/cmdline");
    std::string_view rest = line;
    return std::string(takeWord(rest));
  }

  /// The path of the file that it runs, if it is an interpreter; empty if it is unknown.
  std::string script() const {
    const std::string line = start("/cmdline");
    std::string_view rest = line;
    takeWord(rest);
    std::string_view file = takeWord(rest);
    while (file.starts_with('-')) file = takeWord(rest);
    if (file.empty() || file.starts_with('/')) return std::string(file);
    PathBuffer buffer;
    std::string path(target("/cwd", buffer));
    return path.empty() ? path : path.append("/").append(file);
  }

  /// Whether root or the user of this process started it. The owner of the folder does not tell:
  /// it is root if the process forbids its inspection.
  bool isOwn() const {
    constexpr std::string_view kUser = "\nUid:\t";
    const std::string status = start("/status");
    const std::size_t at = status.find(kUser);
    if (at == std::string::npos) return false;
    const char* const digits = status.data() + at + kUser.size();
    uid_t user = 0;
    const auto read = std::from_chars(digits, status.data() + status.size(), user);
    return read.ec == std::errc() && (user == 0 || user == ::geteuid());
  }

 private:
  std::string_view target(const char* name, PathBuffer& buffer) const {
    const ssize_t length =
        ::readlinkat(_table, (_number + name).c_str(), buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) == buffer.size()) return {};
    return {buffer.data(), static_cast<std::size_t>(length)};
  }

  /// The first few kilobytes of a file.
  std::string start(const char* name) const {
    const FileDescriptor file(::openat(_table, (_number + name).c_str(), O_RDONLY | O_CLOEXEC));
    PathBuffer buffer;
    const ssize_t size = file.isOpen() ? ::read(file.number(), buffer.data(), buffer.size()) : 0;
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
  }

  int _table;
  std::string _number;
};

/// One walk over the process table.
class Walk {
 public:
  /// `descriptor` is the open folder `table`.
  Walk(int descriptor, const std::string& table) : _descriptor(descriptor), _table(table) {}

  /// The application of a process; null if it has none. Valid as long as this object.
  const RunningApplication* applicationOf(const char* number) {
    const Process process(_descriptor, number);
    const std::string_view executable = process.executable(_executable);
    if (executable.empty()) return errno == EACCES ? ofHidden(process) : nullptr;
    if (!executable.starts_with('/')) return nullptr;
    const RunningApplication* found = inFolder(folderOf(executable));
    if (found == nullptr) found = elsewhere(process, executable, number);
    return found != nullptr && process.isOwn() ? found : nullptr;
  }

 private:
  /// The application of a process that this user may not inspect.
  const RunningApplication* ofHidden(const Process& process) {
    const std::string command = process.command();
    if (!command.starts_with('/') || !process.isOwn()) return nullptr;
    return ofFile(isInterpreter(command) ? process.script() : command);
  }

  /// The application of a process whose executable is in no bundle for this process.
  const RunningApplication* elsewhere(const Process& process, std::string_view executable,
                                      const char* number) {
    const bool runsFile = isInterpreter(executable);
    if (!runsFile && isThere(folderOf(executable))) return nullptr;  // the most frequent case
    std::string root;
    root.append(_table).append("/").append(number) += "/root";
    if (!exists(root + "/.flatpak-info")) return runsFile ? ofFile(process.script()) : nullptr;
    const RunningApplication* const found = ofFile(root + std::string(executable));
    return found == nullptr && runsFile ? ofFile(root + process.script()) : found;
  }

  const RunningApplication* ofFile(const std::string& path) {
    return path.starts_with('/') && exists(path) ? inFolder(folderOf(path)) : nullptr;
  }

  /// The application whose bundle is the nearest at or above `folder`, an absolute path without
  /// its last slash; null if there is none.
  const RunningApplication* inFolder(std::string_view folder) {
    const auto known = _ofFolder.find(folder);
    if (known != _ofFolder.end()) return known->second;
    const RunningApplication* application = nullptr;
    if (mayBeBundle(folder)) {
      application = aboveFile(std::string(folder) + "/executable");
    } else if (!folder.empty()) {
      application = inFolder(folderOf(folder));
    }
    _ofFolder.emplace(folder, application);
    return application;
  }

  bool isThere(std::string_view folder) {
    const auto [entry, isNew] = _isThere.try_emplace(std::string(folder));
    if (isNew) entry->second = exists(entry->first + "/");
    return entry->second;
  }

  /// A cheap check that excludes most folders.
  bool mayBeBundle(std::string_view folder) {
    _infoPath.assign(folder).append("/Contents/Info.plist");
    return exists(_infoPath);
  }

  const RunningApplication* aboveFile(const std::string& file) {
    const std::optional<std::string> path = Bundle::pathAbove(file);
    if (!path) return nullptr;
    const auto [entry, isNew] = _ofBundle.try_emplace(*path);
    if (isNew) {
      if (const auto bundle = Bundle::at(*path)) {
        entry->second = RunningApplication{bundle->info("CFBundleIdentifier"), *path};
      }
    }
    return entry->second ? &*entry->second : nullptr;
  }

  int _descriptor;
  std::string _table;
  ByText<const RunningApplication*> _ofFolder;
  ByText<bool> _isThere;
  ByText<std::optional<RunningApplication>> _ofBundle;
  std::string _infoPath;  // a member to reuse its memory, as the next one
  PathBuffer _executable;
};

}  // namespace

LinuxRunningApplications::LinuxRunningApplications(std::string processTable)
    : _processTable(std::move(processTable)) {}

std::vector<RunningApplication> LinuxRunningApplications::list() {
  std::vector<RunningApplication> applications;
  const OpenFolder processes(::opendir(_processTable.c_str()));
  if (!processes) {
    logOnce(ZtLogLevel::Warning, "configuration", _processTable,
            " cannot be read, so companions are not found");
    return applications;
  }
  Walk walk(::dirfd(processes.get()), _processTable);
  while (const dirent* entry = ::readdir(processes.get())) {
    if (!isProcessNumber(entry->d_name)) continue;
    if (const RunningApplication* application = walk.applicationOf(entry->d_name)) {
      applications.push_back(*application);
    }
  }
  return applications;
}

}  // namespace zt
