#pragma once

#include <string>

namespace zt {

/// Absolute path of the folder with the programs that the library starts (`dscl`,
/// `ztportal-applications`); empty when there is none.
///
/// It is looked for from the file that this code was loaded from, a shared library or the program
/// that it is linked into, so that an installation can be moved as a whole:
///
///     /usr/lib/libztportal.so.1                     /usr/libexec/ztportal
///     /usr/lib/x86_64-linux-gnu/libztportal.so.1    /usr/libexec/ztportal
///     /opt/setup/bin/setup                          /opt/setup/libexec/ztportal
///
/// and last where the build was to be installed.
std::string libexecFolder();

}  // namespace zt
