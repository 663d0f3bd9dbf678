#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace zt {

/// Calls `write` with every entry of a list that appends itself to `text`; null entries are left
/// out. After the first entry it makes room for as many again as are left, so that a long list
/// does not move the text over and over.
template <class List, class Write>
void eachEntry(const List& list, std::string& text, Write write) {
  constexpr std::size_t kMostPerEntry = 4096;  // one large entry says nothing of the others
  // With 32 bits a larger guess would fail where the text itself has room.
  constexpr std::size_t kMostRoom = std::numeric_limits<std::size_t>::max() / 16;
  const std::size_t before = text.size();
  std::size_t left = list.size();
  for (const auto& entry : list) {
    if (entry != nullptr) write(*entry);
    if (left-- == list.size()) {
      const std::size_t size = std::min(text.size() - before, kMostPerEntry);
      const std::uint64_t guess = std::uint64_t{left} * (size + size / 8);
      const std::size_t needed =
          text.size() + static_cast<std::size_t>(std::min<std::uint64_t>(guess, kMostRoom));
      if (needed > text.capacity()) text.reserve(needed);
    }
  }
}

}  // namespace zt
