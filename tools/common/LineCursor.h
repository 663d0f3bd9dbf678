#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tools/common/Place.h"

namespace zt::reader {

/// Goes through a text whose lines are known: so many blanks, a tag, perhaps a value and its end
/// tag. The first line decides what a line end is for all of them, CR LF or LF.
///
///     LineCursor lines("  <Name>EDITION</Name>\r\n  <Value>Home</Value>\r\n");
///     lines.takeStart({2, "<Name>"});
///     lines.takeValue("</Name>", {2, "<Value>"});    // "EDITION"
///
/// Each operation raises `ReadError` where the text is something else.
class LineCursor {
 public:
  /// How a line starts.
  struct Start {
    std::size_t blanks;
    std::string_view tag;
  };

  explicit LineCursor(std::string_view text);

  bool atEnd() const { return _at == _text.size(); }
  /// Where the next thing starts.
  std::size_t offset() const { return _at; }
  /// An empty view of that place.
  std::string_view here() const { return _text.substr(_at, 0); }

  /// Whether the line starts so. Asked at the beginning of a line.
  bool startsWith(Start start) const;
  /// Goes behind the start of a line.
  void takeStart(Start start);
  /// Goes behind a whole line.
  void takeLine(Start line);
  /// The same, and says whether it was there.
  bool takeLineIf(Start line);

  /// The value that stands between here and `end`, which is the end of its line. `next` is how the
  /// line after that starts.
  std::string_view takeValue(std::string_view end, Start next);
  /// The value of an element that starts a line and ends one, `start` being its start tag and `end`
  /// its end tag. An XML writer, whose lines end with LF, leaves one without a value as "<Value/>".
  std::string_view takeElement(Start start, std::string_view end, Start next);
  /// Whether the rest of this line ends with `end`.
  bool lineEndsWith(std::string_view end) const;

  /// Refuses what stands in the line behind its blanks.
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
