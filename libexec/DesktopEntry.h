#pragma once

#include <glib.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/Free.h"

namespace zt {

/// A desktop entry, judged as GIO does. GIO's own class would look into all folders of entries and
/// watch them, only to read this one: that takes longer than all else here. Part of the programs,
/// not of the library.
///
///     const DesktopEntry entry = DesktopEntry::inFile("/usr/share/applications/mail.desktop");
///     if (entry.isUsable()) use(entry.name(), entry.command());
class DesktopEntry {
 public:
  /// An entry that cannot be read is there all the same: neither hidden nor usable.
  static DesktopEntry inFile(const char* path);
  static DesktopEntry inText(std::string_view text);

  bool isHidden() const;
  /// Whether it is an application whose program is on this machine.
  bool isUsable() const;
  /// In the user's language; empty when the entry has none.
  std::string name() const;
  /// The words of the command line, quotes taken off; none when they cannot be told.
  std::vector<std::string> command() const;

 private:
  DesktopEntry();
  std::string text(const char* key) const;

  std::unique_ptr<GKeyFile, Free<g_key_file_unref>> _keys;
  bool _isRead = false;
};

}  // namespace zt
