#include "tools/ztinbox/store/Journal.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/ztinbox/store/Database.h"
#include "tools/ztinbox/store/JournalRecord.h"

namespace zt::inbox {

namespace {

constexpr mode_t kOwnerOnly = 0600;
/// By which a file grows.
constexpr std::size_t kStep = std::size_t{1024} * 1024;

[[noreturn]] void fail(const std::string& path) {
  throw DatabaseFault(path + ": " + std::strerror(errno));
}

std::string contentOf(const std::string& path, const Fd& file) {
  struct stat status {};
  if (::fstat(file.number(), &status) != 0) fail(path);
  std::string content(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < content.size()) {
    const ssize_t count = ::pread(file.number(), content.data() + length, content.size() - length,
                                  static_cast<off_t>(length));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(path);
    if (count == 0) break;
    length += static_cast<std::size_t>(count);
  }
  content.resize(length);
  return content;
}

}  // namespace

void Journal::Unmap::operator()(char* bytes) const { ::munmap(bytes, kMostBytes); }

Journal::Journal(const std::string& folder) {
  for (std::size_t i = 0; i < _files.size(); ++i) {
    File& file = _files[i];
    file.path = folder + "/journal." + std::to_string(i);
    file.descriptor = Fd(::open(file.path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    if (!file.descriptor.isOpen()) fail(file.path);
    void* const bytes = ::mmap(nullptr, kMostBytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                               file.descriptor.number(), 0);
    if (bytes == MAP_FAILED) fail(file.path);
    file.bytes.reset(static_cast<char*>(bytes));
  }
}

std::vector<NewReport> Journal::after(std::uint64_t number) const {
  std::vector<NewReport> reports;
  for (const File& file : _files) {
    const std::string content = contentOf(file.path, file.descriptor);
    std::string_view rest = content;
    while (auto report = takeRecord(rest)) {
      if (report->report.number > number) reports.push_back(std::move(*report));
    }
  }
  std::ranges::sort(reports, {}, [](const NewReport& report) { return report.report.number; });
  return reports;
}

void Journal::clear() {
  for (File& file : _files) {
    file.size = 0;
    file.room = 0;
    // What stays if that fails is passed over by its numbers.
    static_cast<void>(::ftruncate(file.descriptor.number(), 0));
  }
}

void Journal::append(const NewReport& report) {
  _record.clear();
  appendRecord(_record, report);
  File& file = _files[_current];
  makeRoom(file, file.size + _record.size());
  std::memcpy(file.bytes.get() + file.size, _record.data(), _record.size());
  file.size += _record.size();
}

/// The disk gives the room before anything is written to it: a full one is noticed here.
void Journal::makeRoom(File& file, std::size_t size) {
  if (size <= file.room) return;
  const std::size_t room = (size + kStep - 1) / kStep * kStep;
  errno = room <= kMostBytes
              ? ::posix_fallocate(file.descriptor.number(), 0, static_cast<off_t>(room))
              : EFBIG;
  if (errno != 0) fail(file.path);
  file.room = room;
}

}  // namespace zt::inbox
