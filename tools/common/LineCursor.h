#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/common/ReportReader.h"

namespace zt::reader {

/// Reads a text with known lines: an indentation in blanks, a tag, perhaps a value and its end tag.
/// The first line decides what a line end is for all of them, CR LF or LF.
///
///     LineCursor lines("  <Name>EDITION</Name>\r\n  <Value>Home</Value>\r\n");
///     lines.takeStart({2, "<Name>"});
///     lines.takeValue("</Name>", {2, "<Value>"});    // "EDITION"
///
/// Each operation throws `ReadError` if the text is something else.
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
  /// The same if the line is there; returns whether it was.
  bool takeLineIf(Start line);

  /// The value from here to `end`, which ends its line. `next` is the start of the line after it.
  std::string_view takeValue(std::string_view end, Start next);
  /// The value of an element with the start tag `start` at the start of a line and the end tag
  /// `end` at the end of one. An XML writer, whose lines end with LF, writes an empty one as
  /// "<Value/>".
  std::string_view takeElement(Start start, std::string_view end, Start next);
  /// Whether the rest of this line ends with `end`.
  bool lineEndsWith(std::string_view end) const;

  /// Throws for the text after the indentation of the line.
  [[noreturn]] void failInLine(const std::string& expected) const;

 private:
  void takeLineEnd();
  /// The end of the line, which is the end of the text for the last one.
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
