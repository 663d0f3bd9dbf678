// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

/// The property list of a bundle.
inline std::string infoPlist(const std::string& entries) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries +
         "</dict></plist>\n";
}

/// The same, with nothing but a bundle identifier.
inline std::string identified(const std::string& identifier) {
  return infoPlist("<key>CFBundleIdentifier</key><string>" + identifier + "</string>");
}

/// A machine without applications: its files are below `root()`, and the environment of its user,
/// who has no language, is set for a scope.
///
///     MadeUpDesktop desktop;
///     desktop.program("usr/bin/mail");
///     desktop.entry("usr/share/applications/mail.desktop", "Name=Mail\nExec=mail %u\n");
class MadeUpDesktop {
 public:
  const std::string& root() const { return _root; }
  std::string path(std::string_view name) const { return _root + "/" + std::string(name); }

  /// Writes a file, with the folders above it, and returns its path.
  std::string write(std::string_view name, std::string_view content) const {
    _folder.write(name, content);
    return path(name);
  }
  /// Adds a program that creates the file "started" when it is run.
  std::string program(std::string_view name) const {
    return script(name, ": >" + path("started") + "\n");
  }
  std::string script(std::string_view name, std::string_view commands) const {
    std::string file = write(name, "#!/bin/sh\n" + std::string(commands));
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    return file;
  }
  std::string link(std::string_view name, const std::string& target) const {
    std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
    std::filesystem::create_symlink(target, path(name));
    return path(name);
  }
  /// Adds a desktop entry of an application with these lines.
  std::string entry(std::string_view name, const std::string& lines) const {
    return write(name, "[Desktop Entry]\nType=Application\n" + lines);
  }
  bool startedAProgram() const { return std::filesystem::exists(path("started")); }

 private:
  static std::string canonical(const std::string& path) {
    return std::filesystem::canonical(path).string();
  }

  TemporaryFolder _folder;
  std::string _root = canonical(_folder.path());
  ScopedEnvironment _home{"HOME", path("home").c_str()};
  ScopedEnvironment _dataHome{"XDG_DATA_HOME", nullptr};
  ScopedEnvironment _dataFolders{"XDG_DATA_DIRS",
                                 (path("usr/local/share") + ":" + path("usr/share")).c_str()};
  ScopedEnvironment _configurationHome{"XDG_CONFIG_HOME", nullptr};
  ScopedEnvironment _configurationFolders{"XDG_CONFIG_DIRS", path("etc/xdg").c_str()};
  ScopedEnvironment _currentDesktop{"XDG_CURRENT_DESKTOP", nullptr};
  ScopedEnvironment _path{"PATH", path("usr/bin").c_str()};
  ScopedEnvironment _languages{"LANGUAGE", nullptr};
  ScopedEnvironment _locale{"LC_ALL", "C.UTF-8"};
};

}  // namespace zt::test
