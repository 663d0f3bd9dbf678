// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/files/Files.h"

namespace zt::test {

/// A decorator that makes chosen operations fail.
///
///     FakeFiles memory;
///     FailingFiles files(memory);
///     files.failOnce(FailingFiles::Operation::Write, 3);   // the third write from now on
///     files.failAlways(FailingFiles::Operation::List);
///
/// A failed operation has no effect on the underlying files, except `WriteMidway`, a write that
/// fails after it has begun: it leaves no file, as with a full disk. `errno` is ENOSPC.
class FailingFiles final : public Files {
 public:
  enum class Operation { CreateFolders, List, Read, Write, WriteMidway, Remove, Move, Lock };

  /// Does not own `files`.
  explicit FailingFiles(Files& files) : _files(files) {}

  /// The `nth` call from now on fails; 1 is the next one.
  void failOnce(Operation operation, int nth) { countdown(operation) = nth; }
  void failAlways(Operation operation) { countdown(operation) = kAlways; }
  void failNoMore(Operation operation) { countdown(operation) = kNever; }

  bool exists(const std::string& path) override { return _files.exists(path); }
  bool isFolder(const std::string& path) override { return _files.isFolder(path); }
  bool createFolders(const std::string& path) override {
    return !fails(Operation::CreateFolders) && _files.createFolders(path);
  }
  bool createPrivateFolders(const std::string& path) override {
    return !fails(Operation::CreateFolders) && _files.createPrivateFolders(path);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) override {
    if (fails(Operation::List)) return std::nullopt;
    return _files.list(folder);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) override {
    if (fails(Operation::Read)) return std::nullopt;
    return _files.read(path, limit);
  }
  bool write(const std::string& path, std::string_view content) override {
    return mayFailMidway(path, [&] { return _files.write(path, content); });
  }
  bool writePrivate(const std::string& path, std::string_view content) override {
    return mayFailMidway(path, [&] { return _files.writePrivate(path, content); });
  }
  bool replacePrivate(const std::string& path, std::string_view content) override {
    return !fails(Operation::Write) && _files.replacePrivate(path, content);
  }
  bool remove(const std::string& path) override {
    return !fails(Operation::Remove) && _files.remove(path);
  }
  std::optional<FileFacts> facts(const std::string& path) override { return _files.facts(path); }
  bool move(const std::string& from, const std::string& to) override {
    return !fails(Operation::Move) && _files.move(from, to);
  }
  FileLock lock(const std::string& path) override {
    return fails(Operation::Lock) ? FileLock{} : _files.lock(path);
  }

 private:
  static constexpr int kNever = 0;
  static constexpr int kAlways = -1;

  template <class Write>
  bool mayFailMidway(const std::string& path, Write write) {
    const bool failsMidway = fails(Operation::WriteMidway);
    if (fails(Operation::Write)) return false;
    if (!failsMidway) return write();
    if (write()) _files.remove(path);
    errno = ENOSPC;
    return false;
  }

  std::atomic<int>& countdown(Operation operation) {
    return _countdowns[static_cast<std::size_t>(operation)];
  }
  bool fails(Operation operation) {
    std::atomic<int>& left = countdown(operation);
    int before = left.load();
    while (before > 0 && !left.compare_exchange_weak(before, before - 1)) {
    }
    const bool isFailing = before == kAlways || before == 1;
    if (isFailing) errno = ENOSPC;
    return isFailing;
  }

  Files& _files;
  std::array<std::atomic<int>, 8> _countdowns{};
};

}  // namespace zt::test
