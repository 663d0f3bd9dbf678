#include "ztportal/pools/PoolWriter.h"

#include "ztportal/base/TextAppend.h"
#include "ztportal/platform/DateText.h"
#include "ztportal/pools/FieldText.h"
#include "ztportal/pools/Markup.h"

namespace zt {

namespace {

constexpr std::size_t kFieldDepth = 4;
constexpr std::size_t kRecordFieldDepth = 8;

void appendDate(std::string& xml, ZtDate date) {
  if (date.isNull()) {
    xml += kNull;
    return;
  }
  appendTimestamp(xml, date);
}

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

void PoolWriter::begin(const ZtString& poolType, ZtDate timeStamp) {
  appendText(_xml, lead(0), kPool.text(_soap), poolType.printed(), kPoolTypeEnd,  //
             lead(0), kDate.text(_soap));
  appendDate(_xml, timeStamp);
  _xml += kDateEnd;
}

void PoolWriter::end() { appendText(_xml, lead(0), kPoolEnd); }

void PoolWriter::beginFields() { appendText(_xml, lead(0), kFields.text(_soap)); }

void PoolWriter::endFields() { appendText(_xml, lead(0), kFieldsEnd); }

void PoolWriter::noFields() { appendText(_xml, lead(0), kNoFields.text(_soap)); }

void PoolWriter::string(std::string_view name, std::string_view value) {
  field(kStringField, name, value);
}

void PoolWriter::string(std::string_view name, const ZtAtomic<ZtString>& value) {
  value.read([&](const ZtString& text) { string(name, text.printed()); });
}

void PoolWriter::date(std::string_view name, const ZtAtomic<ZtDate>& value) {
  beginField(kStringField, name);
  appendDate(_xml, value.load());
  endField();
}

void PoolWriter::integer(std::string_view name, std::int32_t value) {
  field(kIntegerField, name, NumberText(value).view());
}

void PoolWriter::boolean(std::string_view name, ZtBOOL value) {
  field(kBooleanField, name, booleanText(value));
}

void PoolWriter::field(const Tag& type, std::string_view name, std::string_view value) {
  beginField(type, name);
  _xml += value;
  endField();
}

void PoolWriter::beginField(const Tag& type, std::string_view name) {
  if (_inRecords) {
    _xml += nextColumn(type, name);
  } else {
    appendFieldStart(_xml, lead(kFieldDepth), type, name, _soap);
  }
}

void PoolWriter::endField() {
  // In a record the next column, or the record's end, begins with it.
  if (!_inRecords) appendFieldEnd(_xml, lead(kFieldDepth));
}

void PoolWriter::beginRecords(std::string_view name) {
  appendText(_xml, lead(kFieldDepth), kArrayField.text(_soap),  //
             lead(kFieldDepth), kName.text(_soap), name, kNameEnd);
  _inRecords = true;
  _columns.clear();
}

void PoolWriter::beginRecord() {
  appendText(_xml, lead(kFieldDepth), kFields.text(_soap));
  _column = 0;
}

const std::string& PoolWriter::nextColumn(const Tag& type, std::string_view name) {
  if (_column == _columns.size()) {
    std::string& column = _columns.emplace_back();
    if (_column != 0) appendFieldEnd(column, lead(kRecordFieldDepth));
    appendFieldStart(column, lead(kRecordFieldDepth), type, name, _soap);
  }
  return _columns[_column++];
}

void PoolWriter::endRecord() {
  if (_column != 0) appendFieldEnd(_xml, lead(kRecordFieldDepth));
  appendText(_xml, lead(kFieldDepth), kFieldsEnd);
}

void PoolWriter::endRecords() {
  _inRecords = false;
  appendText(_xml, lead(kFieldDepth), kFieldEnd);
}

ZtString PoolWriter::fieldPrefix() const { return lead(kFieldDepth); }

}  // namespace zt
