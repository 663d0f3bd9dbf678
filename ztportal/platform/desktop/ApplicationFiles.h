// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace zt {

/// Where the files of an installed application may be, in order of likelihood.
struct ApplicationFiles {
  std::vector<std::string> programFolders;  // of the program itself and its libraries
  std::vector<std::string> dataFolders;     // shared data that only this application has
  std::string snapInfo;  // the description of a Snap; empty for other applications
};

/// The files of the application that `command` starts. No program is run; a script is assumed to
/// start a program in the library folder with its name.
///
///     /usr/lib/firefox-esr/firefox-esr      /usr/lib/firefox-esr
///     thunderbird (/usr/bin/thunderbird)    /usr/bin, /usr/lib/thunderbird,
///                                           /usr/lib64/thunderbird, /opt/thunderbird
///     flatpak run --command=firefox org.mozilla.firefox
///                                           lib/firefox and share of its deployment
///     env A=b /snap/bin/firefox             usr/lib/firefox and usr/share of /snap/firefox/current
///
/// `root` is the root folder of the system's files.
ApplicationFiles applicationFiles(const std::vector<std::string>& command, const std::string& root);

/// The program that `command` starts, possibly by env(1), with links resolved; empty if there is
/// none.
std::string programOf(const std::vector<std::string>& command);

}  // namespace zt
