// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/Free.h"

namespace zt {

/// A desktop entry, with the rules of GIO. GIO's own class reads and watches all folders of entries
/// for a single one, which takes longer than everything else here. Part of the helper programs, not
/// of the library.
///
///     const DesktopEntry entry = DesktopEntry::inFile("/usr/share/applications/mail.desktop");
///     if (entry.isUsable()) use(entry.name(), entry.command());
class DesktopEntry {
 public:
  /// An entry that cannot be read is neither hidden nor usable.
  static DesktopEntry inFile(const char* path);
  static DesktopEntry inText(std::string_view text);

  bool isHidden() const;
  /// Whether it is an application whose program is installed.
  bool isUsable() const;
  /// The one without a language; empty if the entry has none.
  std::string name() const;
  /// The words of the command line, unquoted; none if it is malformed.
  std::vector<std::string> command() const;

 private:
  DesktopEntry();
  std::string text(const char* key) const;

  std::unique_ptr<GKeyFile, Free<g_key_file_unref>> _keys;
  bool _isRead = false;
};

}  // namespace zt
