// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/files/Files.h"
#include "ztportal/platform/files/SupportFolder.h"

namespace zt::test {

namespace fs = std::filesystem;

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
    const std::optional<fs::path> folder = entryOf(path);
    if (!folder) return false;
    fs::path created;
    for (const fs::path& name : *folder) {
      created /= name;
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
    const std::optional<fs::path> file = entryOf(path);
    if (!file || path.ends_with('/')) return false;
    const auto at = _entries.find(*file);
    if (at == _entries.end()) {
      const auto above = _entries.find(file->parent_path());
      if (above == _entries.end() || !above->second.isFolder()) return false;
      add(*file, Entry{std::string(content), {}});
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
    const fs::path removed = entryOf(path).value_or("/");
    if (entry == nullptr || !entry->names.empty() || removed == "/") return false;
    std::erase(_entries.at(removed.parent_path()).names, removed.filename().string());
    _entries.erase(removed);
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
    _entries.at(*entryOf(path)).time = time;
  }

 private:
  using Clock = std::chrono::system_clock;

  struct Entry {
    std::optional<std::string> content;  // a folder has none
    std::vector<std::string> names;      // of a folder's entries
    Clock::time_point time = Clock::now();
    bool isFolder() const { return !content; }
  };

  /// The entry that `path` means; nothing if it is no path.
  static std::optional<fs::path> entryOf(const std::string& path) {
    if (path.empty() || path.find('\0') != std::string::npos) return std::nullopt;
    const fs::path entry = ("/" / fs::path(path).relative_path()).lexically_normal();
    return entry.has_filename() ? entry : entry.parent_path();
  }

  const Entry* find(const std::string& path) const {
    const std::optional<fs::path> entry = entryOf(path);
    if (!entry) return nullptr;
    const auto at = _entries.find(*entry);
    if (at == _entries.end()) return nullptr;
    if (path.ends_with('/') && !at->second.isFolder()) return nullptr;
    return &at->second;
  }

  void add(const fs::path& path, Entry entry) {
    _entries.at(path.parent_path()).names.push_back(path.filename());
    _entries.emplace(path, std::move(entry));
  }

  mutable std::mutex _mutex;
  std::map<fs::path, Entry> _entries{{"/", Entry{}}};
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
