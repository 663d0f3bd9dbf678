#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zt::test {

/// A folder of its own for a test, removed with all that is in it at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() : _path((std::filesystem::temp_directory_path() / "zttest-XXXXXX").string()) {
    if (mkdtemp(_path.data()) == nullptr) throw std::runtime_error("no temporary folder " + _path);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
  }

  const std::string& path() const { return _path; }
  std::string path(std::string_view name) const { return _path + '/' + std::string(name); }

  /// Writes a file, its parent folders too, and gives its full path.
  std::string write(std::string_view name, std::string_view content) const {
    const std::string file = path(name);
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << content;
    if (!stream.flush()) throw std::runtime_error("cannot write " + file);
    return file;
  }

 private:
  std::string _path;
};

}  // namespace zt::test
