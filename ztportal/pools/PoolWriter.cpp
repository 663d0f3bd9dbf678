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

}  // namespace

PoolWriter::PoolWriter(const ZtString& prefix, std::string& xml, bool soap)
    : _xml(xml), _soap(soap), _prefixSize(prefix.printed().size()) {
  _lead.reserve(_prefixSize + kRecordFieldDepth);
  _lead = prefix.printed();
  _lead.append(kRecordFieldDepth, ' ');
  _field = lead(kFieldDepth);
}

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
  appendField(_xml, _field, kStringField, name, value, _soap);
}

void PoolWriter::date(std::string_view name, ZtDate value) {
  appendText(_xml, _field, kStringField.text(_soap),     //
             _field, kName.text(_soap), name, kNameEnd,  //
             _field, kValue.text(_soap));
  appendDate(_xml, value);
  appendText(_xml, kValueEnd, _field, kFieldEnd);
}

void PoolWriter::integer(std::string_view name, std::int32_t value) {
  appendField(_xml, _field, kIntegerField, name, NumberText(value).view(), _soap);
}

void PoolWriter::boolean(std::string_view name, ZtBOOL value) {
  appendField(_xml, _field, kBooleanField, name, booleanText(value), _soap);
}

void PoolWriter::beginRecords(std::string_view name) {
  appendText(_xml, lead(4), kArrayField.text(_soap),  //
             lead(4), kName.text(_soap), name, kNameEnd);
}

void PoolWriter::beginRecord() {
  appendText(_xml, lead(4), kFields.text(_soap));
  _field = lead(kRecordFieldDepth);
}

void PoolWriter::endRecord() {
  _field = lead(kFieldDepth);
  appendText(_xml, lead(4), kFieldsEnd);
}

void PoolWriter::endRecords() { appendText(_xml, lead(4), kFieldEnd); }

ZtString PoolWriter::fieldPrefix() const { return lead(kFieldDepth); }

}  // namespace zt
