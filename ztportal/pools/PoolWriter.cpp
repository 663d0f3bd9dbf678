// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/PoolWriter.h"

#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/pools/Markup.h"

namespace zt {

namespace {

constexpr std::size_t kFieldDepth = 4;
constexpr std::size_t kRecordFieldDepth = 8;

/// Space for the lead and the columns of any record.
constexpr std::size_t kUsualPieces = 2048;

}  // namespace

PoolWriter::PoolWriter(const ZtString& prefix, std::string& xml, bool soap)
    : _xml(xml), _soap(soap), _prefixSize(prefix.printed().size()) {
  _pieces.reserve(_prefixSize + kUsualPieces);
  _pieces += prefix.printed();
  _pieces.append(kRecordFieldDepth, ' ');
  _columnEnds[0] = _pieces.size();
}

PoolWriter::~PoolWriter() {
  if (!_isPlain) writtenPoolType() = _outerPoolType;
}

std::string_view PoolWriter::lead(std::size_t depth) const {
  return std::string_view(_pieces).substr(0, _prefixSize + depth);
}

void PoolWriter::appendDate(std::string& text, ZtDate date) {
  if (date.isNull()) {
    text += kNull;
  } else {
    _timestamps.append(text, date);
  }
}

void PoolWriter::begin(const ZtString& poolType, ZtDate timeStamp) {
  if (!_isPlain) {
    _poolType = poolType;
    _outerPoolType = std::exchange(writtenPoolType(), _poolType.printed());
  }
  appendText(_xml, lead(0), kPool.text(_soap));
  appendAttributeValue(_xml, poolType.printed());
  appendText(_xml, kPoolTypeEnd, lead(0), kDate.text(_soap));
  appendDate(_xml, timeStamp);
  _xml += kDateEnd;
}

void PoolWriter::end() { appendText(_xml, lead(0), kPoolEnd); }

void PoolWriter::beginFields() { appendText(_xml, lead(0), kFields.text(_soap)); }

void PoolWriter::endFields() { appendText(_xml, lead(0), kFieldsEnd); }

void PoolWriter::noFields() { appendText(_xml, lead(0), kNoFields.text(_soap)); }

// In a record, the text between two values is appended in one piece, because it is the same for
// every record of the list.

inline std::string_view PoolWriter::nextColumn(const Tag& type, std::string_view name) {
  if (_column == _columnCount) addColumn(type, name);
  const std::size_t begin = _columnEnds[_column];
  ++_column;
  return {_pieces.data() + begin, _columnEnds[_column] - begin};
}

inline void PoolWriter::field(const Tag& type, std::string_view name, std::string_view text) {
  if (_inRecords && _isPlain) {
    _xml += nextColumn(type, name);
    _xml += text;
  } else {
    appendField(_xml, lead(_inRecords ? kRecordFieldDepth : kFieldDepth), type, name, text, _soap);
  }
}

void PoolWriter::value(std::string_view name, std::string_view text) {
  field(kStringField, name, text);
}

void PoolWriter::value(std::string_view name, const ZtAtomic<ZtString>& text) {
  field(kStringField, name, text.unguarded().printed());
}

void PoolWriter::value(std::string_view name, const ZtAtomic<ZtDate>& date) {
  if (!_isPlain) {
    std::string text;
    appendDate(text, date.load());
    field(kStringField, name, text);
  } else if (_inRecords) {
    _xml += nextColumn(kStringField, name);
    appendDate(_xml, date.load());
  } else {
    appendFieldStart(_xml, lead(kFieldDepth), kStringField, name, _soap);
    appendDate(_xml, date.load());
    appendFieldEnd(_xml, lead(kFieldDepth));
  }
}

void PoolWriter::value(std::string_view name, std::int32_t number) {
  field(kIntegerField, name, NumberText(number).view());
}

void PoolWriter::value(std::string_view name, ZtBOOL flag) {
  field(kBooleanField, name, booleanText(flag));
}

void PoolWriter::beginRecords(std::string_view name, std::size_t count) {
  appendText(_xml, lead(kFieldDepth), kArrayField.text(_soap),  //
             lead(kFieldDepth), kName.text(_soap), name, kNameEnd);
  _inRecords = true;
  _recordCount = count;
  _pieces.resize(_columnEnds[0]);
  _columnCount = 0;
  _column = 0;
  _recordEndSize = 0;
}

/// Reserves space for the next piece: the lead that is appended to `_pieces` is a part of it, so a
/// reallocation in between would leave the lead dangling.
void PoolWriter::reservePiece(std::string_view name) {
  constexpr std::size_t kLines = 6;  // the largest number of lines of a piece
  constexpr std::size_t kLongestLine = 64;
  _pieces.reserve(_pieces.size() + kLines * (_columnEnds[0] + kLongestLine) + name.size());
}

void PoolWriter::addColumn(const Tag& type, std::string_view name) {
  reservePiece(name);
  if (_columnCount == 0) {
    appendText(_pieces, lead(kFieldDepth), kFields.text(_soap));
  } else {
    appendFieldEnd(_pieces, lead(kRecordFieldDepth));
  }
  appendFieldStart(_pieces, lead(kRecordFieldDepth), type, name, _soap);
  ++_columnCount;
  _columnEnds.at(_columnCount) = _pieces.size();
}

/// Reserves what the markup of the other records is certain to take, so that a long list does not
/// move the text over and over. Values count only by an eighth of that: the first record says
/// nothing about their length.
void PoolWriter::reserveMarkup() {
  const std::size_t markup = (_recordCount - 1) * (_pieces.size() - _columnEnds[0]);
  const std::size_t needed = _xml.size() + markup + markup / 8;
  if (needed > _xml.capacity()) _xml.reserve(needed);
}

void PoolWriter::beginRecord() {
  if (!_isPlain) appendText(_xml, lead(kFieldDepth), kFields.text(_soap));
}

void PoolWriter::endRecord() {
  if (!_isPlain) {
    appendText(_xml, lead(kFieldDepth), kFieldsEnd);
    return;
  }
  const std::size_t begin = _columnEnds[_columnCount];
  if (_recordEndSize == 0) {
    reservePiece({});
    appendFieldEnd(_pieces, lead(kRecordFieldDepth));
    appendText(_pieces, lead(kFieldDepth), kFieldsEnd);
    _recordEndSize = _pieces.size() - begin;
    reserveMarkup();
  }
  _xml.append(_pieces, begin, _recordEndSize);
  _column = 0;
}

void PoolWriter::endRecords() {
  _inRecords = false;
  appendText(_xml, lead(kFieldDepth), kFieldEnd);
}

ZtString PoolWriter::fieldPrefix() const { return lead(kFieldDepth); }

}  // namespace zt
