// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/process/ProgramPath.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "ztportal/platform/files/TrustedFiles.h"

namespace zt {

namespace {

namespace fs = std::filesystem;

/// The folder of a shared object that was loaded by a relative path, as it was at that time; empty
/// if the loader does not know.
std::string folderWhenLoaded(const char* name) {
  void* const object = ::dlopen(name, RTLD_LAZY | RTLD_NOLOAD);
  if (object == nullptr) return {};
  std::array<char, PATH_MAX> folder{};
  if (::dlinfo(object, RTLD_DI_ORIGIN, folder.data()) != 0) folder.front() = '\0';
  ::dlclose(object);
  return folder.data();
}

bool isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

/// The name of the folder has the number of the soname.
fs::path libexecIn(const fs::path& prefix) {
  return prefix / "libexec" / fs::path(ZT_LIBEXEC_FOLDER).filename();
}

bool isProgram(const std::string& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

/// Absolute path of the file that this code was loaded from, a shared library or the program that
/// it is linked into, even if the working directory has changed since; links are not resolved.
std::string fileOfThisCode() {
  static const char kHere = '\0';
  Dl_info ignored{};
  void* found = nullptr;
  if (::dladdr1(&kHere, &ignored, &found, RTLD_DL_LINKMAP) == 0) return executablePath();
  // The loader's name for the program itself is empty.
  const char* const name = static_cast<const link_map*>(found)->l_name;
  if (name == nullptr || *name == '\0') return executablePath();
  const fs::path file = name;
  if (file.is_absolute()) return name;
  return fs::path(folderWhenLoaded(name)) / file.filename();
}

}  // namespace

std::string executablePath() {
  constexpr std::string_view kDeletedMark = " (deleted)";
  std::error_code error;
  std::string path = fs::read_symlink("/proc/self/exe", error).string();
  if (error) return {};
  // The kernel marks a deleted file; but a file may also have such a name.
  if (path.ends_with(kDeletedMark) && !fs::exists(path, error)) {
    path.resize(path.size() - kDeletedMark.size());
  }
  return path;
}

std::string libexecFolder() {
  std::error_code error;
  const fs::path file = fs::canonical(fileOfThisCode(), error);
  const uid_t owner = ownerOf(file);
  std::vector<fs::path> folders;
  if (!error) {
    const fs::path above = file.parent_path().parent_path();
    folders = {libexecIn(above), libexecIn(above.parent_path())};
  }
  folders.emplace_back(ZT_LIBEXEC_FOLDER);
  for (const fs::path& folder : folders) {
    if (isFolder(folder) && isTrusted(folder, owner) && isTrusted(folder.parent_path(), owner)) {
      return folder;
    }
  }
  return {};
}

std::vector<std::string> missingLibexecPrograms() {
  fs::path folder = libexecFolder();
  if (folder.empty()) {
    fs::path prefix = fs::path(fileOfThisCode()).parent_path().parent_path();
    if (prefix.filename() == "lib") prefix = prefix.parent_path();  // lib/x86_64-linux-gnu
    folder = libexecIn(prefix);
  }
  std::vector<std::string> missing;
  for (const char* name : {"dscl", "ztportal-applications"}) {
    std::string path = folder / name;
    if (!isProgram(path)) missing.push_back(std::move(path));
  }
  return missing;
}

std::string standardPath() {
  std::array<char, 1024> text{};
  const std::size_t size = ::confstr(_CS_PATH, text.data(), text.size());
  return size > 0 && size <= text.size() ? text.data() : "/bin:/usr/bin";
}

std::string programPath(const std::string& name) {
  if (name.find('/') != std::string::npos) return isProgram(name) ? name : "";
  if (name.empty()) return {};
  const char* const variable = std::getenv("PATH");
  const std::string path = variable != nullptr ? variable : standardPath();
  std::string_view rest = path;
  for (;;) {
    const std::size_t colon = std::min(rest.find(':'), rest.size());
    std::string file(colon == 0 ? "." : rest.substr(0, colon));
    file.append("/").append(name);
    if (isProgram(file)) return file;
    if (colon == rest.size()) return {};
    rest.remove_prefix(colon + 1);
  }
}

}  // namespace zt
