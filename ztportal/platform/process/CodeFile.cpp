#include "ztportal/platform/process/CodeFile.h"

#include <dlfcn.h>
#include <link.h>

#include <array>
#include <climits>
#include <filesystem>

#include "ztportal/platform/process/Executable.h"

namespace zt {

namespace {

/// The folder of a shared object that was loaded by a relative path, as it was at that time; empty
/// when the loader does not tell.
std::string folderWhenLoaded(const char* name) {
  void* const object = ::dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
  if (object == nullptr) return {};
  std::array<char, PATH_MAX> folder{};
  if (::dlinfo(object, RTLD_DI_ORIGIN, folder.data()) != 0) folder.front() = '\0';
  ::dlclose(object);
  return folder.data();
}

}  // namespace

std::string fileOfThisCode() {
  static const char kHere = '\0';
  Dl_info ignored{};
  void* found = nullptr;
  if (::dladdr1(&kHere, &ignored, &found, RTLD_DL_LINKMAP) == 0) return executablePath();
  // The loader names the program itself by nothing, which is better than by what its starter passed
  // as its name.
  const char* const name = static_cast<const link_map*>(found)->l_name;
  if (name == nullptr || *name == '\0') return executablePath();
  const std::filesystem::path file = name;
  if (file.is_absolute()) return name;
  return std::filesystem::path(folderWhenLoaded(name)) / file.filename();
}

}  // namespace zt
