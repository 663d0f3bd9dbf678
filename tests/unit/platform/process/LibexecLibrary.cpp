// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "ztportal/platform/process/ProgramPath.h"

/// The folder with the library's programs, as seen from the shared library that this is part of.
extern "C" __attribute__((visibility("default"))) const char* zt_libexec_folder();
/// The folder that is the last resort.
extern "C" __attribute__((visibility("default"))) const char* zt_installed_folder();

const char* zt_libexec_folder() {
  static const std::string folder = zt::libexecFolder();
  return folder.c_str();
}

const char* zt_installed_folder() { return ZT_LIBEXEC_FOLDER; }
