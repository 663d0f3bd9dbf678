#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/Text.h"
#include "ztportal/platform/files/Files.h"
#include "ztportal/platform/files/SupportFolder.h"

namespace zt::test {

/// Files and folders in memory, initially only "/". Relative paths start at "/"; there are no
/// links, modes or devices. A file is new when it is written, unless `setTime` says otherwise.
/// `list` returns the entries in the order of their creation. Any number of threads may use it.
class FakeFiles final : public Files {
 public:
  bool exists(const std::string& path) override {
    const std::scoped_lock lock(_mutex);
    return find(path) != nullptr;
  }

  bool isFolder(const std::string& path) override {
    const std::scoped_lock lock(_mutex);
    const Entry* entry = find(path);
    return entry != nullptr && entry->isFolder();
  }

  bool createFolders(const std::string& path) override {
    const std::scoped_lock lock(_mutex);
    const std::optional<Names> names = namesOf(path);
    if (!names) return false;
    Names created;
    for (const std::string& name : *names) {
      created.push_back(name);
      const auto at = _entries.find(created);
      if (at == _entries.end()) {
        add(created, Entry{});
      } else if (!at->second.isFolder()) {
        return false;
      }
    }
    return true;
  }

  bool createPrivateFolders(const std::string& path) override { return createFolders(path); }

  std::optional<std::vector<std::string>> list(const std::string& folder) override {
    const std::scoped_lock lock(_mutex);
    const Entry* entry = find(folder);
    if (entry == nullptr || !entry->isFolder()) return std::nullopt;
    return entry->names;
  }

  std::optional<std::string> read(const std::string& path, std::size_t limit) override {
    const std::scoped_lock lock(_mutex);
    const Entry* entry = find(path);
    if (entry == nullptr || (entry->content && entry->content->size() > limit)) return std::nullopt;
    return entry->content;
  }

  bool write(const std::string& path, std::string_view content) override {
    const std::scoped_lock lock(_mutex);
    const std::optional<Names> names = namesOf(path);
    if (!names || names->empty() || path.ends_with('/')) return false;
    const auto at = _entries.find(*names);
    if (at == _entries.end()) {
      const Names folder(names->begin(), names->end() - 1);
      const auto above = _entries.find(folder);
      if (above == _entries.end() || !above->second.isFolder()) return false;
      add(*names, Entry{std::string(content), {}});
      return true;
    }
    if (at->second.isFolder()) return false;
    at->second.content = content;
    at->second.time = Clock::now();
    return true;
  }

  bool writePrivate(const std::string& path, std::string_view content) override {
    return write(path, content);
  }

  bool replacePrivate(const std::string& path, std::string_view content) override {
    return write(path, content);
  }

  bool remove(const std::string& path) override {
    const std::scoped_lock lock(_mutex);
    const Entry* entry = find(path);
    if (entry == nullptr || !entry->names.empty()) return false;
    const Names names = *namesOf(path);
    if (names.empty()) return false;
    std::vector<std::string>& siblings = folderAbove(names).names;
    siblings.erase(std::find(siblings.begin(), siblings.end(), names.back()));
    _entries.erase(names);
    return true;
  }

  std::optional<FileFacts> facts(const std::string& path) override {
    const std::scoped_lock lock(_mutex);
    const Entry* entry = find(path);
    if (entry == nullptr) return std::nullopt;
    return FileFacts{entry->isFolder() ? 0 : entry->content->size(), entry->time};
  }

  bool move(const std::string& from, const std::string& to) override {
    const std::optional<FileFacts> moved = facts(from);
    const std::optional<std::string> content = read(from, std::string::npos);
    if (!content || exists(to) || !write(to, *content)) return false;
    setTime(to, moved->time);
    return remove(from);
  }

  FileLock lock(const std::string& path) override {
    if (!exists(path) && !write(path, "")) return {};
    const std::scoped_lock lock(_mutex);
    if (!_locked.insert(path).second) return {nullptr, true};
    return {std::shared_ptr<const void>(this,
                                        [this, path](const void* /*this*/) {
                                          const std::scoped_lock guard(_mutex);
                                          _locked.erase(path);
                                        }),
            false};
  }

  /// Sets when the file at `path`, which exists, was written.
  void setTime(const std::string& path, std::chrono::system_clock::time_point time) {
    const std::scoped_lock lock(_mutex);
    _entries.at(*namesOf(path)).time = time;
  }

 private:
  using Clock = std::chrono::system_clock;
  using Names = std::vector<std::string>;

  struct Entry {
    std::optional<std::string> content;  // a folder has none
    Names names;                         // of a folder's entries
    Clock::time_point time = Clock::now();
    bool isFolder() const { return !content; }
  };

  /// The names in `path`, none for "/"; nothing if it is no path.
  static std::optional<Names> namesOf(std::string_view path) {
    if (path.empty() || path.find('\0') != std::string_view::npos) return std::nullopt;
    Names names;
    while (!path.empty()) {
      const std::string_view name = takeLine(path, '/');
      if (name == "..") {
        if (!names.empty()) names.pop_back();
      } else if (!name.empty() && name != ".") {
        names.emplace_back(name);
      }
    }
    return names;
  }

  const Entry* find(const std::string& path) const {
    const std::optional<Names> names = namesOf(path);
    if (!names) return nullptr;
    const auto at = _entries.find(*names);
    if (at == _entries.end()) return nullptr;
    if (path.ends_with('/') && !at->second.isFolder()) return nullptr;
    return &at->second;
  }

  Entry& folderAbove(const Names& names) {
    return _entries.at(Names(names.begin(), names.end() - 1));
  }

  void add(const Names& names, Entry entry) {
    folderAbove(names).names.push_back(names.back());
    _entries.emplace(names, std::move(entry));
  }

  mutable std::mutex _mutex;
  std::map<Names, Entry> _entries{{Names{}, Entry{}}};
  std::set<std::string> _locked;
};

/// The user domain's folder is `folder`. From call number `movesAt` on, if that is not 0, it is
/// `moved`.
class FakeSupportFolder final : public SupportFolder {
 public:
  std::optional<std::string> path(std::int16_t domain) override {
    askedDomains.push_back(domain);
    if (askedDomains.size() == movesAt) folder = moved;
    return domain == kUserDomain ? folder : std::nullopt;
  }

  std::optional<std::string> folder = "/home/user/.local/share";
  std::size_t movesAt = 0;
  std::optional<std::string> moved;
  std::vector<std::int16_t> askedDomains;
};

}  // namespace zt::test
