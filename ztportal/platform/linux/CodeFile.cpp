#include "ztportal/platform/linux/CodeFile.h"

#include <dlfcn.h>
#include <link.h>

#include "ztportal/platform/Executable.h"

namespace zt {

std::string fileOfThisCode() {
  static const char kHere = '\0';
  Dl_info ignored{};
  void* found = nullptr;
  if (::dladdr1(&kHere, &ignored, &found, RTLD_DL_LINKMAP) == 0) return executablePath();
  // The loader names the program itself by nothing, which is better than by what its starter passed
  // as its name.
  const char* const name = static_cast<const link_map*>(found)->l_name;
  return name == nullptr || *name == '\0' ? executablePath() : name;
}

}  // namespace zt
