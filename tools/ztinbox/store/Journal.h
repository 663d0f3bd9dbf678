// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/ztinbox/store/StoredReport.h"
#include "ztportal/base/FileDescriptor.h"

namespace zt::inbox {

/// Appends a record of `report` to `bytes`: number, time, sender, answer, head and packed body, but
/// not what can be read from its text.
///
/// A record is a mark, the length of its content, a checksum, and the content. Numbers have 64 bits
/// in the machine's byte order; strings are a length and their bytes.
void appendRecord(std::string& bytes, const IncomingReport& report);

/// Removes the record at the beginning of `bytes` and returns it. Returns nullopt if there is no
/// complete record, which happens if the program or the machine stopped while writing one.
std::optional<IncomingReport> takeRecord(std::string_view& bytes);

/// The write-ahead log: the reports that are not in the database yet, in two alternating files of
/// the data folder. While the reports of one file are moved to the database, the other receives the
/// next ones.
///
///     journal.append(report);      // from now on, the report survives the end of the program
///     journal.turn();              // the next reports go into the other file
///     ...                          // the earlier reports are committed to the database
///     journal.forget();            // their file is reused
///
/// The files are mapped into memory, so appending is copying. A reused file may still contain
/// reports that are in the database; their numbers show it.
///
/// Used by one thread at a time, except that one thread may call forget() while another appends.
/// Throws DatabaseFault.
class Journal {
 public:
  /// The size limit of a file.
  static constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;

  explicit Journal(const std::string& folder);

  /// The reports with higher numbers than `number`, in their order. These are the reports that an
  /// earlier run of the program did not move to the database.
  std::vector<IncomingReport> after(std::uint64_t number) const;
  /// Removes all reports and releases the disk space.
  void clear();

  /// Appends the whole report or nothing.
  void append(const IncomingReport& report);
  /// Between two calls, forget() must be called.
  void turn() { _current = 1 - _current; }
  void forget() { _files[1 - _current].size = 0; }

 private:
  struct Unmap {
    void operator()(char* bytes) const;
  };
  struct File {
    std::string path;
    FileDescriptor descriptor;
    std::unique_ptr<char, Unmap> bytes;  ///< kMostBytes, of which `capacity` are usable
    std::size_t capacity = 0;            ///< allocated on the disk
    std::size_t size = 0;                ///< in use
  };

  static void makeRoom(File& file, std::size_t size);

  std::array<File, 2> _files;
  std::size_t _current = 0;
  std::string _record;  ///< keeps its memory
};

}  // namespace zt::inbox
