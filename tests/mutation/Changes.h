#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zt::mutation {

/// One change of a source that its tests should notice.
struct Change {
  std::size_t begin;
  std::size_t size;
  std::string replacement;
};

/// All changes of `source`, in its order: operators turned around, constants one more and one less,
/// texts emptied and changed in a letter, statements dropped. A statement keeps its line ends. Some
/// do not compile.
std::vector<Change> changesOf(std::string_view source);

/// `source` with a change.
std::string changed(std::string_view source, const Change& change);

/// What a reader sees of a change: the lines it touches before and after it, each joined to one.
struct ChangedLines {
  std::size_t line;  ///< the first of them, from 1 on
  std::string before;
  std::string after;
};
ChangedLines linesOf(std::string_view source, const Change& change);

}  // namespace zt::mutation
