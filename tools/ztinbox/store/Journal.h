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
/// A record is a mark, the length of its content, a checksum, and the content; numbers are 64 bits
/// in the machine's own byte order, strings a length and their bytes.
void appendRecord(std::string& bytes, const IncomingReport& report);

/// Removes the record at the beginning of `bytes` and returns it. Nothing if they do not begin with
/// a complete record, which happens if the program or the machine stopped while writing one.
std::optional<IncomingReport> takeRecord(std::string_view& bytes);

/// The write-ahead log: the reports that are kept but not in the database yet, in two alternating
/// files of the data folder. While the reports of one are moved to the database, the other takes
/// the next ones.
///
///     journal.append(report);      // survives the end of the program from now on
///     journal.turn();              // the next reports go into the other file
///     ...                          // the earlier reports are committed to the database
///     journal.forget();            // their file is reused
///
/// The files are mapped into memory, so appending is copying. A reused file is overwritten; until
/// then it may contain reports that are in the database too, which their numbers show.
///
/// Used by one thread at a time, except that one may call forget() while another one appends.
/// Throws DatabaseFault.
class Journal {
 public:
  /// The size limit of a file.
  static constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;

  explicit Journal(const std::string& folder);

  /// Those with higher numbers than `number`, in their order: those that an earlier run of the
  /// program did not move to the database.
  std::vector<IncomingReport> after(std::uint64_t number) const;
  /// Removes all, and releases the disk space.
  void clear();

  /// All of it or nothing.
  void append(const IncomingReport& report);
  /// After a forget() since the last one.
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
