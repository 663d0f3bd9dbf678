#include <string>

#include "ztportal/platform/process/ProgramPath.h"

/// The folder with the library's programs, as seen from the shared library that this is part of.
extern "C" __attribute__((visibility("default"))) const char* zt_libexec_folder();

const char* zt_libexec_folder() {
  static const std::string folder = zt::libexecFolder();
  return folder.c_str();
}
