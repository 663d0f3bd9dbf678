// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/DataFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/ztinbox/Fault.h"
#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

constexpr mode_t kFolderMode = 0700;

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

void create(const std::string& path) {
  const std::filesystem::path parent = std::filesystem::path(path).parent_path();
  std::error_code error;
  if (!parent.empty()) std::filesystem::create_directories(parent, error);
  if (!error && ::mkdir(path.c_str(), kFolderMode) != 0 && errno != EEXIST) {
    error.assign(errno, std::generic_category());
  }
  if (!error && !std::filesystem::is_directory(path, error) && !error) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (error) {
    throw MachineFault("cannot create the data folder " + path + ": " +
                       std::strerror(error.value()));
  }
}

/// Locks the folder. The kernel releases the lock when the process ends, however that happens.
FileDescriptor lock(const std::string& path) {
  const std::string file = path + "/ztinbox.lock";
  FileDescriptor opened(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
  if (!opened.isOpen()) {
    throw MachineFault("cannot write to the data folder " + path + ": " + std::strerror(errno));
  }
  if (::flock(opened.number(), LOCK_EX | LOCK_NB) == 0) return opened;
  if (errno == EWOULDBLOCK) {
    throw MachineFault("the data folder " + path +
                       " is in use by another inbox; choose another one with --data");
  }
  throw MachineFault("cannot lock " + file + ": " + std::strerror(errno));
}

/// Earlier versions stored reports in these files first. They are empty unless it was killed.
void refuseJournal(const std::string& path) {
  for (const char* name : {"/journal.0", "/journal.1"}) {
    std::error_code error;
    if (std::filesystem::file_size(path + name, error) == 0 || error) continue;
    throw MachineFault(
        path + name +
        ": reports that an earlier version of ztinbox received before it was killed; "
        "start and stop that version once, or remove the file");
  }
}

}  // namespace

std::string defaultDataFolder() {
  const std::string data = variable("XDG_DATA_HOME");
  // Relative paths must be ignored (XDG base directories).
  if (data.starts_with('/')) return std::string(withoutTrailingSlashes(data)) + "/ztinbox";
  const std::string home = variable("HOME");
  if (!home.empty()) return std::string(withoutTrailingSlashes(home)) + "/.local/share/ztinbox";
  throw MachineFault("no home folder to keep reports in; choose a folder with --data");
}

DataFolder::DataFolder(std::string_view path) : _path(withoutTrailingSlashes(path)) {
  create(_path);
  _lock = lock(_path);
  refuseJournal(_path);
}

}  // namespace zt::inbox
