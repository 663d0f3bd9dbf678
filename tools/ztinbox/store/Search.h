// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zt::inbox {

/// What a report must contain to be found: a word or, with blanks and other characters between
/// them, several words in this order.
struct SearchTerm {
  std::string text;
  bool isBeginning = false;  ///< the last word may go on

  friend bool operator==(const SearchTerm&, const SearchTerm&) = default;
};

/// Turns what the user typed into terms, all of which must occur, in any order and letter case. A
/// word of three or more characters also matches longer words that start with it; words in
/// quotation marks are a phrase. There is no term if there is no letter or digit.
///
///     copy fail "disk full"  ->  copy…, fail…, disk full
std::vector<SearchTerm> searchTerms(std::string_view typed);

// Limits of the index. The rest of a longer value or of a larger report is not indexed.
inline constexpr std::size_t kLongestSearchedValue = std::size_t{64} * 1024;
inline constexpr std::size_t kLongestSearchText = std::size_t{1024} * 1024;

/// The text of a report for the full-text index: its identity, and the names and values of its
/// pools, one line each. If the report cannot be read, this is its whole text.
std::string searchText(std::string_view report);

// Indexing costs more than everything else about storing a report, so no sender waits for it: it is
// done in portions when there is time, and before a search. A sender may have to wait for one
// portion, which takes some milliseconds.
inline constexpr std::size_t kReportsOfPortion = 32;
inline constexpr std::size_t kBytesOfPortion = std::size_t{1024} * 1024;

}  // namespace zt::inbox
