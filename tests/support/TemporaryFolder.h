// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace zt::test {

/// A new empty folder, which is removed with its content at the end of the scope.
class TemporaryFolder {
 public:
  TemporaryFolder() : _path((std::filesystem::temp_directory_path() / "zt-test-XXXXXX").string()) {
    if (::mkdtemp(_path.data()) == nullptr) throw std::runtime_error("mkdtemp " + _path);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(_path, error);
  }

  const std::string& path() const { return _path; }
  std::string path(std::string_view name) const { return _path + "/" + std::string(name); }

  /// Writes a file, creates its parent folders, and returns its path.
  std::string write(std::string_view name, std::string_view content) const {
    std::string file = path(name);
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    if (!stream) throw std::runtime_error("cannot write " + file);
    return file;
  }

 private:
  std::string _path;
};

}  // namespace zt::test
