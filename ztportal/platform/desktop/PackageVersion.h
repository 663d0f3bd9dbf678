// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace zt {

/// The version of the package that contains the file `path`, without what distributions add to it:
/// "128.5.0esr" for the Debian package "1:128.5.0esr-1~deb12u1". Empty if no package contains it.
/// The databases of dpkg(1), rpm(8), pacman(8), apk and Portage are asked; only rpm is run for it.
///
/// `guesses` are likely names of the package; they are tried before the file lists of all packages
/// are read. `root` is the root folder of the system's files.
std::string packageVersion(const std::string& path, const std::vector<std::string>& guesses,
                           const std::string& root);

}  // namespace zt
