#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zt::tools {

enum class Align { Left, Right };

/// Lines of columns, each as wide as its widest text, two blanks apart:
///
///     Columns lines({Align::Left, Align::Right});
///     lines.add({"a.ztr", "7 bytes"});
///     print(lines.text());
///
/// A text is as wide as it has characters. Nothing follows the last text of a line.
class Columns {
 public:
  explicit Columns(std::vector<Align> alignments);

  /// Adds a line of as many texts as there are columns.
  void add(std::vector<std::string> texts);
  /// All lines, each ended.
  std::string text() const;

 private:
  std::vector<Align> _alignments;
  std::vector<std::size_t> _widths;
  std::vector<std::vector<std::string>> _lines;
};

}  // namespace zt::tools
