#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"

namespace zt {

/// Writes what the frames of all pools have in common: the Data, Date and Fields lines, the fixed
/// fields, and arrays of records. A pool's own writing then reads like the table of its fields:
///
///     PoolWriter pool(prefix, xml, soap);
///     pool.begin(poolType(), timeStamp());
///     pool.beginFields();
///     pool.string("START_POINT", startPoint());
///     pool.boolean("CANCELLED", cancelled());
///     pool.records("INSTALLATIONSTEPS", steps, [&](const Step& step) {
///       pool.string("STEP_NAME", step.stepName());
///     });
///     addFieldsToXml(pool.fieldPrefix(), xml, soap);
///     pool.endFields();
///     pool.end();
class PoolWriter {
 public:
  PoolWriter(const ZtString& prefix, std::string& xml, bool soap);
  PoolWriter(const PoolWriter&) = delete;
  PoolWriter& operator=(const PoolWriter&) = delete;
  ~PoolWriter() = default;

  void begin(const ZtString& poolType, ZtDate timeStamp);
  void end();

  void beginFields();
  void endFields();
  /// The one line of a pool that has no field.
  void noFields();

  void string(std::string_view name, const ZtString& value) { string(name, value.printed()); }
  void string(std::string_view name, std::string_view value);
  /// A string field with the text of a time stamp.
  void date(std::string_view name, ZtDate value);
  void integer(std::string_view name, std::int32_t value);
  void boolean(std::string_view name, ZtBOOL value);

  /// An array of records, one group of fields each, which `writeRecord` writes. Nothing at all is
  /// written for an empty list.
  template <class List, class WriteRecord>
  void records(std::string_view name, const List& list, WriteRecord writeRecord) {
    if (list.empty()) return;
    beginRecords(name);
    for (const auto& record : list) {
      if (record == nullptr) continue;
      beginRecord();
      writeRecord(*record);
      endRecord();
    }
    endRecords();
  }

  /// Where the pool's generic fields start.
  ZtString fieldPrefix() const;

 private:
  void beginRecords(std::string_view name);
  void beginRecord();
  void endRecord();
  void endRecords();

  /// The start of a line, `depth` blanks behind the pool's own.
  std::string_view lead(std::size_t depth) const;

  std::string& _xml;
  bool _soap;
  std::size_t _prefixSize;
  std::string _lead;        // the prefix and the blanks of the deepest line
  std::string_view _field;  // the start of the field lines being written
};

}  // namespace zt
