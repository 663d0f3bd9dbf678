#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/files/Files.h"

namespace zt::test {

/// Other files, of whose operations a test is told before they happen: "read /a", "write /a". It
/// may raise an exception then.
class ObservedFiles final : public Files {
 public:
  using Observer = std::function<void(const std::string& operation)>;

  /// Does not own `files`.
  ObservedFiles(Files& files, Observer observer) : _files(files), _observer(std::move(observer)) {}

  bool exists(const std::string& path) override {
    _observer("exists " + path);
    return _files.exists(path);
  }
  bool isFolder(const std::string& path) override {
    _observer("isFolder " + path);
    return _files.isFolder(path);
  }
  bool createFolders(const std::string& path) override {
    _observer("createFolders " + path);
    return _files.createFolders(path);
  }
  bool createFoldersBelow(const std::string& root, const std::string& relative) override {
    _observer("createFolders " + root + "/" + relative);
    return _files.createFoldersBelow(root, relative);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) override {
    _observer("list " + folder);
    return _files.list(folder);
  }
  std::optional<std::string> read(const std::string& path) override {
    _observer("read " + path);
    return _files.read(path);
  }
  bool write(const std::string& path, std::string_view content) override {
    _observer("write " + path);
    return _files.write(path, content);
  }
  bool writeBelow(const std::string& root, const std::string& relative,
                  std::string_view content) override {
    _observer("write " + root + "/" + relative);
    return _files.writeBelow(root, relative, content);
  }
  bool remove(const std::string& path) override {
    _observer("remove " + path);
    return _files.remove(path);
  }

 private:
  Files& _files;
  Observer _observer;
};

}  // namespace zt::test
