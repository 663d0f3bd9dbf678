#pragma once

#include <string>
#include <vector>

namespace zt {

/// Where the files of an installed application may stand, most likely place first.
struct ApplicationFiles {
  std::vector<std::string> programFolders;  // of the program itself and its libraries
  std::vector<std::string> dataFolders;     // shared data that only this application has
  std::string snapInfo;                     // the description of the Snap; empty for all else
};

/// The places of the application that is started by `command`. Nothing is started: a program that
/// is a script stands for one in the library folder of its name.
///
///     /usr/lib/firefox-esr/firefox-esr      /usr/lib/firefox-esr
///     thunderbird (/usr/bin/thunderbird)    /usr/bin, /usr/lib/thunderbird,
///     /usr/lib64/thunderbird,
///                                           /opt/thunderbird
///     flatpak run --command=firefox org.mozilla.firefox
///                                           lib/firefox and share of what is deployed of it
///     env A=b /snap/bin/firefox             usr/lib/firefox and usr/share of /snap/firefox/current
///
/// `root` is the folder that the system's files stand in.
ApplicationFiles applicationFiles(const std::vector<std::string>& command, const std::string& root);

/// The program that `command` starts, with its links followed; empty when there is none. What
/// env(1) does before is left out.
std::string programOf(const std::vector<std::string>& command);

}  // namespace zt
