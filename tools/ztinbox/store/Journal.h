#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/ztinbox/http/Fd.h"
#include "tools/ztinbox/store/NewReport.h"

namespace zt::inbox {

/// The reports that are kept but not in the database yet, in two files of the data folder that take
/// turns: while the reports of one are brought into the database, the other takes the next ones.
///
///     journal.append(report);      // from now on no end of the program can undo it
///     journal.turn();              // what follows goes into the other file
///     ...                          // what was appended before is committed to the database
///     journal.forget();            // the file with it starts over
///
/// The files are mapped into memory, so that to append is to copy. What starts over is overwritten;
/// until then a file may hold what is in the database too, and the numbers tell that.
///
/// One thread at a time uses it, except that one may call forget() while another one appends.
/// Throws DatabaseFault.
class Journal {
 public:
  /// What a file holds at most.
  static constexpr std::size_t kMostBytes = std::size_t{64} * 1024 * 1024;

  explicit Journal(const std::string& folder);

  /// Those with higher numbers than `number`, in their order: what an earlier run of the program
  /// did not bring into the database.
  std::vector<NewReport> after(std::uint64_t number) const;
  /// Forgets all, and gives the room back to the disk.
  void clear();

  /// In whole or not at all.
  void append(const NewReport& report);
  /// After a forget() since the last one.
  void turn() { _current = 1 - _current; }
  void forget() { _files[1 - _current].size = 0; }

 private:
  struct Unmap {
    void operator()(char* bytes) const;
  };
  struct File {
    std::string path;
    Fd descriptor;
    std::unique_ptr<char, Unmap> bytes;  ///< kMostBytes, of which `room` can be used
    std::size_t room = 0;                ///< on the disk
    std::size_t size = 0;                ///< of what is not forgotten
  };

  static void makeRoom(File& file, std::size_t size);

  std::array<File, 2> _files;
  std::size_t _current = 0;
  std::string _record;  ///< its memory is used again
};

}  // namespace zt::inbox
