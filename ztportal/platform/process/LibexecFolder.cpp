#include "ztportal/platform/process/LibexecFolder.h"

#include <filesystem>
#include <system_error>

#include "ztportal/platform/process/CodeFile.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

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
