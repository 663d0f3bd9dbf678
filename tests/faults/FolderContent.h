#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <system_error>

namespace zt::torture {

/// The content of each file of a folder by its name; nothing for what is no regular file.
using FolderContent = std::map<std::string, std::optional<std::string>>;

inline std::optional<std::string> fileContent(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Empty for a folder that is not there.
inline FolderContent folderContent(const std::string& path) {
  FolderContent content;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(path, missing)) {
    content[entry.path().filename().string()] =
        entry.is_regular_file() ? fileContent(entry.path().string()) : std::nullopt;
  }
  return content;
}

}  // namespace zt::torture
