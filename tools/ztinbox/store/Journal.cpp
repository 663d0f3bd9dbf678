// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/Journal.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include "tools/ztinbox/store/DataFolder.h"
#include "tools/ztinbox/store/Database.h"
#include "ztportal/base/RegularFile.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

/// "ztrecord"
constexpr std::uint64_t kMark = 0x6472'6f63'6572'747a;
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBeforeContent = 3 * kWord;

void put(std::string& bytes, std::uint64_t number) {
  bytes.append(reinterpret_cast<const char*>(&number), kWord);
}

void put(std::string& bytes, std::string_view text) {
  put(bytes, std::uint64_t{text.size()});
  bytes.append(text);
}

void set(std::string& bytes, std::size_t at, std::uint64_t number) {
  std::memcpy(bytes.data() + at, &number, kWord);
}

/// FNV-1a (draft-eastlake-fnv), by words. It detects content of which only a part reached the disk,
/// not forged content.
std::uint64_t sumOf(std::string_view bytes) {
  constexpr std::uint64_t kPrime = 0x100'0000'01b3;
  std::uint64_t sum = 0xcbf2'9ce4'8422'2325;
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), kWord);
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), count);
    sum = (sum ^ word) * kPrime;
    bytes.remove_prefix(count);
  }
  return sum;
}

/// Reads the parts of a record's content. After a missing part, all others are missing too.
class Parts {
 public:
  explicit Parts(std::string_view bytes) : _rest(bytes) {}

  std::uint64_t number() {
    std::uint64_t value = 0;
    const std::string_view bytes = take(kWord);
    if (!_failed) std::memcpy(&value, bytes.data(), kWord);
    return value;
  }
  std::string_view text() { return take(number()); }
  bool failed() const { return _failed; }

 private:
  std::string_view take(std::uint64_t count) {
    if (_failed || count > _rest.size()) {
      _failed = true;
      return {};
    }
    const std::string_view taken = _rest.substr(0, count);
    _rest.remove_prefix(count);
    return taken;
  }

  std::string_view _rest;
  bool _failed = false;
};

std::optional<IncomingReport> readContentOf(std::string_view bytes) {
  Parts parts(bytes);
  IncomingReport report;
  report.report.number = parts.number();
  report.report.received = Timestamp(milliseconds(static_cast<std::int64_t>(parts.number())));
  report.report.test = parts.number() != 0;
  const auto answer = parseAnswer(parts.text());
  report.report.sender = parts.text();
  const auto size = static_cast<std::size_t>(parts.number());
  report.head = parts.text();
  report.packedBody = parts.text();
  if (parts.failed() || !answer) return std::nullopt;
  report.report.answer = *answer;
  report.read(unpacked(report.packedBody, size));
  return report;
}

/// Files grow in steps of this size.
constexpr std::size_t kStep = std::size_t{1024} * 1024;

[[noreturn]] void failOn(const std::string& path) {
  throw DatabaseFault(path + ": " + std::strerror(errno));
}

}  // namespace

void appendRecord(std::string& bytes, const IncomingReport& report) {
  const StoredReport& about = report.report;
  const std::size_t begin = bytes.size();
  put(bytes, kMark);
  put(bytes, std::uint64_t{0});  // length and checksum, set below
  put(bytes, std::uint64_t{0});
  put(bytes, about.number);
  const auto received = std::chrono::floor<milliseconds>(about.received.time_since_epoch());
  put(bytes, static_cast<std::uint64_t>(received.count()));
  put(bytes, std::uint64_t{about.test});
  put(bytes, answerWord(about.answer));
  put(bytes, about.sender);
  put(bytes, std::uint64_t{about.size});
  put(bytes, report.head);
  put(bytes, report.packedBody);
  const std::string_view content = std::string_view(bytes).substr(begin + kBeforeContent);
  set(bytes, begin + kWord, content.size());
  set(bytes, begin + 2 * kWord, sumOf(content));
}

std::optional<IncomingReport> takeRecord(std::string_view& bytes) {
  Parts parts(bytes);
  const bool isMarked = parts.number() == kMark;
  const std::uint64_t length = parts.number();
  const std::uint64_t sum = parts.number();
  if (parts.failed() || !isMarked || length > bytes.size() - kBeforeContent) return std::nullopt;
  const std::string_view content = bytes.substr(kBeforeContent, length);
  if (sumOf(content) != sum) return std::nullopt;
  auto report = readContentOf(content);
  if (report) bytes.remove_prefix(kBeforeContent + length);
  return report;
}

void Journal::Unmap::operator()(char* bytes) const { ::munmap(bytes, kMostBytes); }

Journal::Journal(const std::string& folder) {
  for (std::size_t i = 0; i < _files.size(); ++i) {
    File& file = _files[i];
    file.path = folder + "/journal." + std::to_string(i);
    file.descriptor =
        FileDescriptor(::open(file.path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    if (!file.descriptor.isOpen()) failOn(file.path);
    void* const bytes = ::mmap(nullptr, kMostBytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                               file.descriptor.number(), 0);
    if (bytes == MAP_FAILED) failOn(file.path);
    file.bytes.reset(static_cast<char*>(bytes));
  }
}

std::vector<IncomingReport> Journal::after(std::uint64_t number) const {
  std::vector<IncomingReport> reports;
  for (const File& file : _files) {
    const std::optional<std::string> content = regularFile(file.path, kMostBytes);
    if (!content) failOn(file.path);
    std::string_view rest = *content;
    while (auto report = takeRecord(rest)) {
      if (report->report.number > number) reports.push_back(std::move(*report));
    }
  }
  std::ranges::sort(reports, {}, [](const IncomingReport& report) { return report.report.number; });
  return reports;
}

void Journal::clear() {
  for (File& file : _files) {
    file.size = 0;
    file.capacity = 0;
    // If this fails, the numbers of the old reports show that they are in the database.
    [[maybe_unused]] const int ignored = ::ftruncate(file.descriptor.number(), 0);
  }
}

void Journal::append(const IncomingReport& report) {
  _record.clear();
  appendRecord(_record, report);
  File& file = _files[_current];
  makeRoom(file, file.size + _record.size());
  std::memcpy(file.bytes.get() + file.size, _record.data(), _record.size());
  file.size += _record.size();
}

/// Allocates the disk space before anything is written, so that a full disk is detected here.
void Journal::makeRoom(File& file, std::size_t size) {
  if (size <= file.capacity) return;
  const std::size_t capacity = (size + kStep - 1) / kStep * kStep;
  errno = capacity <= kMostBytes
              ? ::posix_fallocate(file.descriptor.number(), 0, static_cast<off_t>(capacity))
              : EFBIG;
  if (errno != 0) failOn(file.path);
  file.capacity = capacity;
}

}  // namespace zt::inbox
