#include "ztportal/platform/desktop/LinuxRunningApplications.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ztportal/platform/plist/Bundle.h"

namespace zt {

namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { ::closedir(folder); }
};
using OpenFolder = std::unique_ptr<DIR, CloseFolder>;

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const noexcept {
    return std::hash<std::string_view>{}(text);
  }
};
template <class Value>
using ByText = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

bool isProcessNumber(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(),
                                      [](char digit) { return digit >= '0' && digit <= '9'; });
}

/// The target of the link `process`/exe, in `buffer`; empty if it cannot be read completely.
std::string_view executableOf(int processTable, std::string_view process,
                              std::array<char, PATH_MAX>& buffer) {
  constexpr std::string_view kLink = "/exe";
  std::array<char, 32> name;
  if (process.size() + kLink.size() >= name.size()) return {};
  char* end = std::copy(process.begin(), process.end(), name.begin());
  *std::copy(kLink.begin(), kLink.end(), end) = '\0';
  const ssize_t length = ::readlinkat(processTable, name.data(), buffer.data(), buffer.size());
  if (length <= 0 || static_cast<std::size_t>(length) == buffer.size()) return {};
  return {buffer.data(), static_cast<std::size_t>(length)};
}

std::string_view folderOf(std::string_view path) { return path.substr(0, path.rfind('/')); }

/// The bundles found in one walk over the process table.
class BundlesOfWalk {
 public:
  /// The application whose bundle is the nearest at or above `folder`, an absolute path without
  /// its last slash; null if there is none. Valid as long as this object.
  const RunningApplication* applicationAround(std::string_view folder) {
    const auto known = _ofFolder.find(folder);
    if (known != _ofFolder.end()) return known->second;
    const RunningApplication* application = nullptr;
    if (mayBeBundle(folder)) {
      application = applicationAbove(std::string(folder) + "/executable");
    } else if (!folder.empty()) {
      application = applicationAround(folderOf(folder));
    }
    _ofFolder.emplace(folder, application);
    return application;
  }

 private:
  /// A cheap check that excludes most folders.
  bool mayBeBundle(std::string_view folder) {
    _infoPath.assign(folder).append("/Contents/Info.plist");
    return ::access(_infoPath.c_str(), F_OK) == 0;
  }

  const RunningApplication* applicationAbove(const std::string& executable) {
    const std::optional<std::string> path = Bundle::pathAbove(executable);
    if (!path) return nullptr;
    const auto [entry, isNew] = _ofBundle.try_emplace(*path);
    if (isNew) {
      if (const auto bundle = Bundle::at(*path)) {
        entry->second = RunningApplication{bundle->info("CFBundleIdentifier"), *path};
      }
    }
    return entry->second ? &*entry->second : nullptr;
  }

  ByText<const RunningApplication*> _ofFolder;
  ByText<std::optional<RunningApplication>> _ofBundle;
  std::string _infoPath;  // a member to reuse its memory
};

}  // namespace

LinuxRunningApplications::LinuxRunningApplications(std::string processTable)
    : _processTable(std::move(processTable)) {}

std::vector<RunningApplication> LinuxRunningApplications::list() {
  std::vector<RunningApplication> applications;
  const OpenFolder processes(::opendir(_processTable.c_str()));
  if (!processes) return applications;
  const int descriptor = ::dirfd(processes.get());
  std::array<char, PATH_MAX> buffer;
  BundlesOfWalk bundles;
  while (const dirent* entry = ::readdir(processes.get())) {
    if (!isProcessNumber(entry->d_name)) continue;
    const std::string_view executable = executableOf(descriptor, entry->d_name, buffer);
    if (!executable.starts_with('/')) continue;
    if (const RunningApplication* application = bundles.applicationAround(folderOf(executable))) {
      applications.push_back(*application);
    }
  }
  return applications;
}

}  // namespace zt
