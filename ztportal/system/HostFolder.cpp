// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/HostFolder.h"

#include <cerrno>
#include <system_error>

#include "ztportal/base/Log.h"
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
  if (name.isNull()) {
    logOnce(ZtLogLevel::Warning, "store", "there is no store, because the host has no name");
    return std::nullopt;
  }
  if (isFileName(name.view())) return joinedPath(kVendorName, name.view());
  const std::string executable = executablePath();
  const std::string replacement = executable.substr(executable.rfind('/') + 1);
  logOnce(ZtLogLevel::Warning, "store",
          "the name of the host is not one of a folder; the store of ", replacement, " is used");
  return joinedPath(kVendorName, replacement);
}

}  // namespace

std::optional<std::string> supportFolder(std::int16_t domain, std::string_view relativePath) {
  Platform& platform = Platform::current();
  const std::optional<std::string> root = platform.supportFolder().path(domain);
  if (!root) return std::nullopt;
  std::string path = joinedPath(*root, relativePath);
  if (platform.files().createFolders(*root) &&
      (platform.files().exists(path) || platform.files().createFolders(path))) {
    return path;
  }
  logOnce(ZtLogLevel::Warning, "store", "the folder ", path,
          " cannot be created: ", std::generic_category().message(errno));
  return std::nullopt;
}

std::optional<std::string> hostFolder() {
  const std::optional<std::string> name = nameOfHostFolder();
  return name ? supportFolder(kUserDomain, *name) : std::nullopt;
}

std::optional<std::string> hostFolderPath() {
  const std::optional<std::string> name = nameOfHostFolder();
  std::optional<std::string> path;
  if (name) path = Platform::current().supportFolder().path(kUserDomain);
  if (path) appendText(*path, "/", *name);
  return path;
}

}  // namespace zt
