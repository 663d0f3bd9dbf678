#pragma once

#include <cstdint>
#include <mutex>
#include <string_view>

namespace zt::inbox {

/// Writes lines to a descriptor, each at once. A reader that takes nothing any more (a pipe that
/// nobody empties, a stopped terminal) must not hold up the inbox: lines that cannot be written
/// within a moment are left out, and the next one that can is preceded by a line saying how many.
/// Any thread may call it.
class LineOutput {
 public:
  /// `descriptor` stays the caller's.
  explicit LineOutput(int descriptor) : _descriptor(descriptor) {}

  /// One line or several, the last one without its line end.
  void write(std::string_view lines);

 private:
  void writePart(std::string_view lines);
  bool isReady() const;
  void writeAll(std::string_view bytes) const;

  const int _descriptor;
  std::mutex _mutex;
  std::uint64_t _leftOut = 0;
};

}  // namespace zt::inbox
