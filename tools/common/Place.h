#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zt::reader {

/// A place in a text as editors count it: lines end with a line feed, columns are bytes, both from
/// 1 on.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;

  friend bool operator==(const Place&, const Place&) = default;
};

/// The place of the byte at `offset` of `text`; of the text's end for every offset beyond it.
Place placeIn(std::string_view text, std::size_t offset);

/// A text that is no report, or not one that can be taken apart without doubt. Tells the place of
/// the first thing that cannot be read, and what was expected there:
///
///     line 12, column 19: expected "</Field>"
class ReadError : public std::runtime_error {
 public:
  ReadError(Place place, const std::string& reason);

  const Place& place() const { return _place; }

 private:
  Place _place;
};

}  // namespace zt::reader
