#include "ztportal/system/HostFolder.h"

#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/process/ProgramPath.h"
#include "ztportal/system/ZtHost.h"

namespace zt {

namespace {

/// Path of the host's folder below the user's. A name that would lead elsewhere is replaced by that
/// of the executable file.
std::optional<std::string> nameOfHostFolder() {
  const ZtString name = ZtHost::bundleInfo("CFBundleName");
  if (name.isNull()) return std::nullopt;
  if (isFileName(name.view())) return joinedPath(vendorName().view(), name.view());
  const std::string executable = executablePath();
  return joinedPath(vendorName().view(), executable.substr(executable.rfind('/') + 1));
}

}  // namespace

std::optional<std::string> supportFolder(std::int16_t domain, std::string_view relativePath) {
  Platform& platform = Platform::current();
  const std::optional<std::string> root = platform.supportFolder().path(domain);
  if (!root || !platform.files().createFolders(*root)) return std::nullopt;
  std::string path = joinedPath(*root, relativePath);
  if (!platform.files().exists(path) && !platform.files().createFolders(path)) return std::nullopt;
  return path;
}

std::optional<std::string> hostFolder() {
  const std::optional<std::string> name = nameOfHostFolder();
  return name ? supportFolder(kUserDomain, *name) : std::nullopt;
}

std::optional<std::string> hostFolderPath() {
  const std::optional<std::string> name = nameOfHostFolder();
  if (!name) return std::nullopt;
  const std::optional<std::string> root = Platform::current().supportFolder().path(kUserDomain);
  return root ? std::optional(joinedPath(*root, *name)) : std::nullopt;
}

}  // namespace zt
