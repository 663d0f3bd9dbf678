#include "ztportal/platform/linux/modules/Module.h"

#include <dlfcn.h>

#include <exception>
#include <filesystem>

#include "ztportal/platform/linux/CodeFile.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

/// The folder of the shared library. One that was found by a relative path may have been left
/// behind by a change of the working directory; the loader still knows its folder and puts it here.
fs::path libraryFolder() {
  const fs::path library = fileOfThisCode();
  return library.is_absolute() ? fs::canonical(library).parent_path() : "$ORIGIN";
}

}  // namespace

const void* loadModule(const char* name) noexcept {
  try {
    fs::path file = libraryFolder() / ZT_MODULE_FOLDER / name;
    file += ".so";
    // Not closed again, not even with the library: threads that end later still call it.
    void* module = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    return module == nullptr ? nullptr : ::dlsym(module, "ztportalModuleTable");
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace zt
