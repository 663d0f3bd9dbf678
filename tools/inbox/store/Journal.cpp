#include "tools/inbox/store/Journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/inbox/store/Database.h"
#include "tools/inbox/store/JournalRecord.h"

namespace zt::inbox {

namespace {

constexpr mode_t kOwnerOnly = 0600;

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

bool writeAll(const Fd& file, std::string_view bytes, std::size_t at) {
  while (!bytes.empty()) {
    const ssize_t count =
        ::pwrite(file.number(), bytes.data(), bytes.size(), static_cast<off_t>(at));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
    at += static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

Journal::Journal(const std::string& folder) {
  for (std::size_t i = 0; i < _files.size(); ++i) {
    File& file = _files[i];
    file.path = folder + "/journal." + std::to_string(i);
    file.descriptor = Fd(::open(file.path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnerOnly));
    if (!file.descriptor.isOpen()) fail(file.path);
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
    // What stays if that fails is passed over by its numbers.
    static_cast<void>(::ftruncate(file.descriptor.number(), 0));
  }
}

void Journal::append(const NewReport& report) {
  _record.clear();
  appendRecord(_record, report);
  File& file = _files[_current];
  if (!writeAll(file.descriptor, _record, file.size)) {
    const int reason = errno;
    // What was written of it is no whole record; the next one is written over it.
    static_cast<void>(::ftruncate(file.descriptor.number(), static_cast<off_t>(file.size)));
    errno = reason;
    fail(file.path);
  }
  file.size += _record.size();
}

}  // namespace zt::inbox
