#include "ztportal/platform/linux/LibexecFolder.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <system_error>

#include "ztportal/platform/Executable.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

/// The file that this code was loaded from. The loader names the program itself by nothing, which
/// is better than by what its starter passed as its name.
fs::path fileOfThisCode() {
  static const char kHere = '\0';
  Dl_info ignored{};
  void* found = nullptr;
  if (::dladdr1(&kHere, &ignored, &found, RTLD_DL_LINKMAP) == 0) return executablePath();
  const char* const name = static_cast<const link_map*>(found)->l_name;
  return name == nullptr || *name == '\0' ? executablePath() : name;
}

bool isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

}  // namespace

std::string libexecFolder() {
  std::error_code error;
  const fs::path file = fs::canonical(fileOfThisCode(), error);
  if (!error) {
    const fs::path above = file.parent_path().parent_path();
    for (const fs::path& prefix : {above, above.parent_path()}) {
      const fs::path folder = prefix / "libexec" / "ztportal";
      if (isFolder(folder)) return folder.string();
    }
  }
  return isFolder(ZT_LIBEXEC_FOLDER) ? ZT_LIBEXEC_FOLDER : "";
}

}  // namespace zt
