// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

/// A folder whose content, where mounting is permitted, is visible only to this process and its
/// subprocesses: a companion that runs from it does not put other hosts into test mode.
class PrivateFolder {
 public:
  PrivateFolder() {
    static const bool kHasOwnMounts =
        ::unshare(CLONE_NEWNS) == 0 &&
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    _isMounted = kHasOwnMounts && ::mount("none", _folder.path().c_str(), "tmpfs", 0, nullptr) == 0;
  }
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;
  ~PrivateFolder() {
    if (_isMounted) ::umount2(_folder.path().c_str(), MNT_DETACH);
  }

  const TemporaryFolder& folder() const { return _folder; }

 private:
  const TemporaryFolder _folder;
  bool _isMounted = false;
};

/// The bundle of a companion application, which runs between start() and stop().
class CompanionBundle {
 public:
  /// `ghost` is the content of its property list; without one there is no list.
  explicit CompanionBundle(const std::optional<std::string>& ghost) {
    const TemporaryFolder& folder = _folder.folder();
    folder.write("Ghost/Contents/Info.plist",
                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                 "<key>CFBundleIdentifier</key><string>com.kelvane.ZtPortalGhost</string>"
                 "<key>CFBundleName</key><string>Ghost</string></dict></plist>\n");
    if (ghost) folder.write("Ghost/Contents/Resources/ghost.plist", *ghost);
    _program = folder.path("Ghost/Contents/Linux/ghost");
    std::filesystem::create_directories(std::filesystem::path(_program).parent_path());
    std::filesystem::copy_file("/bin/sleep", _program);
  }

  void start() { _process.emplace(std::vector<std::string>{_program, "600"}); }
  void stop() { _process.reset(); }

 private:
  PrivateFolder _folder;
  std::string _program;
  std::optional<Subprocess> _process;
};

}  // namespace zt::test
