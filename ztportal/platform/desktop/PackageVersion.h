#pragma once

#include <string>
#include <vector>

namespace zt {

/// The version of the package that the file `path` belongs to, without what the distribution adds
/// to it; empty when no package database knows it. `guesses` are names that the package may have:
/// they are looked at first, which saves reading the file lists of all packages.
///
/// dpkg(1): its files are read; "1:128.5.0esr-1~deb12u1" is the version "128.5.0esr".
std::string dpkgVersion(const std::string& path, const std::vector<std::string>& guesses,
                        const std::string& root);

/// rpm(8): the program is asked, when there is a database for it.
std::string rpmVersion(const std::string& path, const std::string& root);

}  // namespace zt
