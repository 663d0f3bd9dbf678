// SPDX-License-Identifier: Apache-2.0
#include "tools/common/LineCursor.h"

#include <algorithm>

namespace zt::reader {

namespace {

constexpr std::string_view kWrittenLineEnd = "\r\n";
constexpr std::string_view kXmlLineEnd = "\n";
constexpr std::string_view kEmptyTagEnd = "/>";

std::string_view lineEndOf(std::string_view text) {
  const std::size_t first = text.find('\n');
  const bool isXml = first != std::string_view::npos && (first == 0 || text[first - 1] != '\r');
  return isXml ? kXmlLineEnd : kWrittenLineEnd;
}

}  // namespace

std::string quoted(std::string_view text) {
  std::string all = "\"";
  return all.append(text).append("\"");
}

LineCursor::LineCursor(std::string_view text) : _text(text), _lineEnd(lineEndOf(text)) {}

std::size_t LineCursor::lineEndAfter(std::size_t offset) const {
  return std::min(_text.find(_lineEnd, offset), _text.size());
}

std::size_t LineCursor::blanksHere() const {
  return std::min(_text.find_first_not_of(' ', _at), _text.size()) - _at;
}

bool LineCursor::startsWith(Start start) const {
  return blanksHere() == start.blanks && _text.substr(_at + start.blanks).starts_with(start.tag);
}

void LineCursor::takeStart(Start start) {
  const std::size_t blanks = blanksHere();
  if (blanks != start.blanks) {
    failAt(
        _at + std::min(blanks, start.blanks),
        quoted(start.tag).append(" after ").append(std::to_string(start.blanks)).append(" blanks"));
  }
  if (!_text.substr(_at + blanks).starts_with(start.tag)) failAt(_at + blanks, quoted(start.tag));
  _at += blanks + start.tag.size();
}

void LineCursor::takeLine(Start line) {
  takeStart(line);
  takeLineEnd();
}

bool LineCursor::takeLineIf(Start line) {
  if (!startsWith(line)) return false;
  takeLine(line);
  return true;
}

void LineCursor::takeLineEnd() {
  if (!_text.substr(_at).starts_with(_lineEnd)) {
    failAt(_at, _lineEnd == kXmlLineEnd ? "the end of the line" : "the end of the line (CR LF)");
  }
  _at += _lineEnd.size();
}

bool LineCursor::lineEndsWith(std::string_view end) const {
  return _text.substr(_at, lineEndAfter(_at) - _at).ends_with(end);
}

std::string_view LineCursor::takeValue(std::string_view end, Start next) {
  const std::size_t begin = _at;
  const std::size_t lineEnd = lineEndAfter(begin);
  const std::string_view line = _text.substr(begin, lineEnd - begin);
  if (line.ends_with(end)) {
    _at = lineEnd;
    takeLineEnd();
    return line.substr(0, line.size() - end.size());
  }

  const std::size_t found = _text.find(end, begin);
  if (found == std::string_view::npos) failAt(lineEnd, quoted(end));
  const std::string_view value = _text.substr(begin, found - begin);
  std::string nextLine(_lineEnd);
  nextLine.append(next.blanks, ' ').append(next.tag);
  if (value.find(nextLine) != std::string_view::npos) failAt(lineEnd, quoted(end));
  _at = found + end.size();
  takeLineEnd();
  return value;
}

std::string_view LineCursor::takeElement(Start start, std::string_view end, Start next) {
  const Start name{start.blanks, start.tag.substr(0, start.tag.size() - 1)};
  if (_lineEnd == kXmlLineEnd && startsWith(name) &&
      _text.substr(_at + name.blanks + name.tag.size()).starts_with(kEmptyTagEnd)) {
    _at += name.blanks + name.tag.size() + kEmptyTagEnd.size();
    const std::string_view value = here();
    takeLineEnd();
    return value;
  }
  takeStart(start);
  return takeValue(end, next);
}

void LineCursor::failInLine(const std::string& expected) const {
  failAt(_at + blanksHere(), expected);
}

void LineCursor::failAt(std::size_t offset, const std::string& expected) const {
  std::string reason = "expected ";
  reason += expected;
  if (offset >= _text.size()) reason += ", found the end of the text";
  throw ReadError(placeIn(_text, offset), reason);
}

}  // namespace zt::reader
