#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The folders that applications keep their shared data in, as far as they exist in the
/// environment: `$XDG_DATA_HOME` and `$XDG_DATA_DIRS` or what stands for them (XDG base
/// directories), then those that Flatpak and Snap export to and that a session started before
/// their installation does not have in its environment. `root` is the folder that the system's
/// files stand in; what the variables name is taken as it is.
std::vector<std::string> dataFolders(const std::string& root);

/// The files of a desktop ID in `dataFolders`, in their order: the first one is in force. As a
/// dash in the ID may stand for a slash, "kde4-mail.desktop" is `applications/kde4-mail.desktop` or
/// `applications/kde4/mail.desktop`.
std::vector<std::string> desktopEntryFiles(const std::vector<std::string>& dataFolders,
                                           std::string_view desktopId);

/// The desktop ID of the file `path`; outside of `dataFolders` its name.
std::string desktopIdOf(const std::vector<std::string>& dataFolders, const std::string& path);

}  // namespace zt
