#include "ztportal/pools/PoolWriter.h"

#include "ztportal/base/TextAppend.h"
#include "ztportal/pools/FieldText.h"
#include "ztportal/pools/Markup.h"

namespace zt {

namespace {

constexpr std::size_t kFieldDepth = 4;
constexpr std::size_t kRecordFieldDepth = 8;

std::string deepestLead(std::string_view prefix) {
  std::string lead;
  lead.reserve(prefix.size() + kRecordFieldDepth);
  lead += prefix;
  lead.append(kRecordFieldDepth, ' ');
  return lead;
}

}  // namespace

PoolWriter::PoolWriter(const ZtString& prefix, std::string& xml, bool soap)
    : _xml(xml),
      _soap(soap),
      _prefixSize(prefix.printed().size()),
      _lead(deepestLead(prefix.printed())) {}

std::string_view PoolWriter::lead(std::size_t depth) const {
  return std::string_view(_lead).substr(0, _prefixSize + depth);
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

inline void PoolWriter::beginField(const Tag& type, std::string_view name) {
  if (_inRecords) {
    if (_column == _columns.size()) addColumn(type, name);
    _xml += _columns[_column++];
  } else {
    appendFieldStart(_xml, lead(kFieldDepth), type, name, _soap);
  }
}

inline void PoolWriter::endField() {
  if (!_inRecords) appendFieldEnd(_xml, lead(kFieldDepth));
}

inline void PoolWriter::field(const Tag& type, std::string_view name, std::string_view value) {
  beginField(type, name);
  _xml += value;
  endField();
}

void PoolWriter::string(std::string_view name, std::string_view value) {
  field(kStringField, name, value);
}

void PoolWriter::string(std::string_view name, const ZtAtomic<ZtString>& value) {
  field(kStringField, name, value.unguarded().printed());
}

void PoolWriter::date(std::string_view name, const ZtAtomic<ZtDate>& value) {
  beginField(kStringField, name);
  appendDate(value.load());
  endField();
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
  _columns.clear();
  _column = 0;
}

void PoolWriter::addColumn(const Tag& type, std::string_view name) {
  std::string& column = _columns.emplace_back();
  if (_columns.size() == 1) {
    appendText(column, lead(kFieldDepth), kFields.text(_soap));
  } else {
    appendFieldEnd(column, lead(kRecordFieldDepth));
  }
  appendFieldStart(column, lead(kRecordFieldDepth), type, name, _soap);
}

void PoolWriter::endRecord() {
  if (_recordEnd.empty()) {
    appendFieldEnd(_recordEnd, lead(kRecordFieldDepth));
    appendText(_recordEnd, lead(kFieldDepth), kFieldsEnd);
  }
  _xml += _recordEnd;
  _column = 0;
}

void PoolWriter::endRecords() {
  _inRecords = false;
  appendText(_xml, lead(kFieldDepth), kFieldEnd);
}

ZtString PoolWriter::fieldPrefix() const { return lead(kFieldDepth); }

}  // namespace zt
