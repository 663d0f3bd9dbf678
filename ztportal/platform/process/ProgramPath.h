// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace zt {

/// Absolute path of the executable of this process; empty if it is unknown.
std::string executablePath();

/// Absolute path of the folder with the programs that the library starts (`dscl`,
/// `ztportal-applications`); empty if there is none.
///
/// It is relative to the file that this code was loaded from, a shared library or the program that
/// it is linked into, so that an installation can be moved as a whole:
///
///     /usr/lib/libztportal.so.1                     /usr/libexec/ztportal-1
///     /usr/lib/x86_64-linux-gnu/libztportal.so.1    /usr/libexec/ztportal-1
///     /opt/setup/bin/setup                          /opt/setup/libexec/ztportal-1
///
/// or else the one in the installation prefix of the build. A folder that another user may write,
/// or that belongs neither to root, the user nor the owner of the file with this code, is none: a
/// program in /tmp/setup must not run what somebody put into /tmp/libexec.
std::string libexecFolder();

/// The paths of those programs that are not in libexecFolder(), or not where that should be.
std::vector<std::string> missingLibexecPrograms();

/// The value of `PATH` to use if the environment has none (confstr(3)).
std::string standardPath();

/// The file that is run for `name` as the first word of a command: itself if it has a slash, else
/// the first such program in `PATH`; empty if none may be run.
std::string programPath(const std::string& name);

}  // namespace zt
