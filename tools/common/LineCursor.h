// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/common/ReportReader.h"

namespace zt::reader {

/// Reads a text with known lines: an indentation of spaces, a tag, perhaps a value and its end tag.
/// The line end of the first line, CR LF or LF, counts for all of them.
///
///     LineCursor lines("  <Name>EDITION</Name>\r\n  <Value>Home</Value>\r\n");
///     lines.takeStart({2, "<Name>"});
///     lines.takeValue("</Name>", {2, "<Value>"});    // "EDITION"
///
/// Each operation throws `ReadError` if the text does not match.
class LineCursor {
 public:
  /// How a line starts.
  struct Start {
    std::size_t blanks;
    std::string_view tag;
  };

  explicit LineCursor(std::string_view text);

  bool atEnd() const { return _at == _text.size(); }
  std::size_t offset() const { return _at; }
  /// An empty view of the current position.
  std::string_view here() const { return _text.substr(_at, 0); }

  /// Whether the line starts with `start`. Call it at the beginning of a line.
  bool startsWith(Start start) const;
  /// Skips the start of a line.
  void takeStart(Start start);
  /// Skips a whole line.
  void takeLine(Start line);
  /// Skips the line if it matches; returns whether it did.
  bool takeLineIf(Start line);

  /// Reads a value up to `end`, which is at the end of a line. `next` is how the line after it
  /// starts.
  std::string_view takeValue(std::string_view end, Start next);
  /// Reads the value of an element whose start tag `start` is at the start of a line and whose end
  /// tag `end` is at the end of one. In a text with LF line ends, which an XML writer produced, an
  /// empty element can be "<Value/>".
  std::string_view takeElement(Start start, std::string_view end, Start next);
  /// Whether the rest of this line ends with `end`.
  bool lineEndsWith(std::string_view end) const;

  /// Throws a ReadError at the position after the line's indentation.
  [[noreturn]] void failInLine(const std::string& expected) const;

 private:
  void takeLineEnd();
  /// The end of the line; for the last one, the end of the text.
  std::size_t lineEndAfter(std::size_t offset) const;
  std::size_t blanksHere() const;
  [[noreturn]] void failAt(std::size_t offset, const std::string& expected) const;

  std::string_view _text;
  std::string_view _lineEnd;
  std::size_t _at = 0;
};

/// `text` in quotation marks, for a message.
std::string quoted(std::string_view text);

}  // namespace zt::reader
