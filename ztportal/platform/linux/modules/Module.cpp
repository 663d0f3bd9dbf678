#include "ztportal/platform/linux/modules/Module.h"

#include <dlfcn.h>

#include <exception>
#include <filesystem>

#include "ztportal/platform/linux/CodeFile.h"

namespace zt {

const void* loadModule(const char* name) noexcept {
  try {
    const std::filesystem::path library = std::filesystem::canonical(fileOfThisCode());
    std::filesystem::path file = library.parent_path() / ZT_MODULE_FOLDER / name;
    file += ".so";
    // Not closed again, not even with the library: threads that end later still call it.
    void* module = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    return module == nullptr ? nullptr : ::dlsym(module, "ztportalModuleTable");
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace zt
