#include "ztportal/platform/process/ProgramPath.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace zt {

namespace {

bool isProgram(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored) && ::access(path.c_str(), X_OK) == 0;
}

}  // namespace

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
