#include "ztportal/pools/PoolWriter.h"

#include "ztportal/base/Text.h"
#include "ztportal/pools/FieldText.h"
#include "ztportal/pools/Markup.h"

namespace zt {

namespace {

constexpr std::size_t kFieldDepth = 4;
constexpr std::size_t kRecordFieldDepth = 8;

/// Room for the lead and for the columns of the records with the most of them.
constexpr std::size_t kUsualPieces = 2048;

}  // namespace

PoolWriter::PoolWriter(const ZtString& prefix, std::string& xml, bool soap)
    : _xml(xml), _soap(soap), _prefixSize(prefix.printed().size()) {
  _pieces.reserve(_prefixSize + kUsualPieces);
  _pieces += prefix.printed();
  _pieces.append(kRecordFieldDepth, ' ');
  _columnEnds[0] = _pieces.size();
}

std::string_view PoolWriter::lead(std::size_t depth) const {
  return std::string_view(_pieces).substr(0, _prefixSize + depth);
}

void PoolWriter::appendDate(ZtDate date) {
  if (date.isNull()) {
    _xml += kNull;
  } else {
    _timestamps.append(_xml, date);
  }
}

void PoolWriter::begin(const ZtString& poolType, ZtDate timeStamp) {
  appendText(_xml, lead(0), kPool.text(_soap), poolType.printed(), kPoolTypeEnd,  //
             lead(0), kDate.text(_soap));
  appendDate(timeStamp);
  _xml += kDateEnd;
}

void PoolWriter::end() { appendText(_xml, lead(0), kPoolEnd); }

void PoolWriter::beginFields() { appendText(_xml, lead(0), kFields.text(_soap)); }

void PoolWriter::endFields() { appendText(_xml, lead(0), kFieldsEnd); }

void PoolWriter::noFields() { appendText(_xml, lead(0), kNoFields.text(_soap)); }

// What a field's lines have before its value is appended in one piece, and what they have behind it
// with the next field's or the record's end: in a record both are the same for each of the list.

inline std::string_view PoolWriter::nextColumn(const Tag& type, std::string_view name) {
  if (_column == _columnCount) addColumn(type, name);
  const std::size_t begin = _columnEnds[_column];
  ++_column;
  return {_pieces.data() + begin, _columnEnds[_column] - begin};
}

inline void PoolWriter::field(const Tag& type, std::string_view name, std::string_view value) {
  if (_inRecords) {
    _xml += nextColumn(type, name);
    _xml += value;
  } else {
    appendField(_xml, lead(kFieldDepth), type, name, value, _soap);
  }
}

void PoolWriter::string(std::string_view name, std::string_view value) {
  field(kStringField, name, value);
}

void PoolWriter::string(std::string_view name, const ZtAtomic<ZtString>& value) {
  field(kStringField, name, value.unguarded().printed());
}

void PoolWriter::date(std::string_view name, const ZtAtomic<ZtDate>& value) {
  if (_inRecords) {
    _xml += nextColumn(kStringField, name);
    appendDate(value.load());
  } else {
    appendFieldStart(_xml, lead(kFieldDepth), kStringField, name, _soap);
    appendDate(value.load());
    appendFieldEnd(_xml, lead(kFieldDepth));
  }
}

void PoolWriter::integer(std::string_view name, std::int32_t value) {
  field(kIntegerField, name, NumberText(value).view());
}

void PoolWriter::boolean(std::string_view name, ZtBOOL value) {
  field(kBooleanField, name, booleanText(value));
}

void PoolWriter::beginRecords(std::string_view name) {
  appendText(_xml, lead(kFieldDepth), kArrayField.text(_soap),  //
             lead(kFieldDepth), kName.text(_soap), name, kNameEnd);
  _inRecords = true;
  _pieces.resize(_columnEnds[0]);
  _columnCount = 0;
  _column = 0;
  _recordEndSize = 0;
}

/// Makes room for the next piece, as the lead that is appended to it is in the same memory.
void PoolWriter::makeRoomForPiece(std::string_view name) {
  constexpr std::size_t kLines = 6;  // no piece has more
  constexpr std::size_t kLongestLine = 64;
  _pieces.reserve(_pieces.size() + kLines * (_columnEnds[0] + kLongestLine) + name.size());
}

void PoolWriter::addColumn(const Tag& type, std::string_view name) {
  makeRoomForPiece(name);
  if (_columnCount == 0) {
    appendText(_pieces, lead(kFieldDepth), kFields.text(_soap));
  } else {
    appendFieldEnd(_pieces, lead(kRecordFieldDepth));
  }
  appendFieldStart(_pieces, lead(kRecordFieldDepth), type, name, _soap);
  ++_columnCount;
  _columnEnds.at(_columnCount) = _pieces.size();
}

void PoolWriter::endRecord() {
  const std::size_t begin = _columnEnds[_columnCount];
  if (_recordEndSize == 0) {
    makeRoomForPiece({});
    appendFieldEnd(_pieces, lead(kRecordFieldDepth));
    appendText(_pieces, lead(kFieldDepth), kFieldsEnd);
    _recordEndSize = _pieces.size() - begin;
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
