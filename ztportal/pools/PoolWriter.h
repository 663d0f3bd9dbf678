#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/pools/EachEntry.h"
#include "ztportal/pools/FieldText.h"

namespace zt {

/// Writes what the frames of all pools have in common: the Data, Date and Fields lines, the fixed
/// fields, and arrays of records. A pool's own writing then reads like the table of its fields:
///
///     PoolWriter pool(prefix, xml, soap);
///     pool.begin(poolType(), timeStamp());
///     pool.beginFields();
///     pool.string("START_POINT", _startPoint);
///     pool.boolean("CANCELLED", _cancelled);
///     pool.records("INSTALLATIONSTEPS", _steps);   // each step writes its own fields
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

  void string(std::string_view name, std::string_view value);
  void string(std::string_view name, const ZtAtomic<ZtString>& value);
  /// A string field with the text of a time stamp.
  void date(std::string_view name, const ZtAtomic<ZtDate>& value);
  void integer(std::string_view name, std::int32_t value);
  void boolean(std::string_view name, ZtBOOL value);

  /// An array of records, one group of fields each, which a record's `addFieldsTo` writes: the
  /// same fields in the same order for every record. Nothing at all is written for an empty list.
  template <class List>
  void records(std::string_view name, const List& list) {
    if (list.empty()) return;
    beginRecords(name);
    eachEntry(list, _xml, [this](const auto& record) {
      record.addFieldsTo(*this);
      endRecord();
    });
    endRecords();
  }

  /// The same for a list that may be missing, which is an empty one.
  template <class List>
  void records(std::string_view name, const std::shared_ptr<List>& list) {
    if (list != nullptr) records(name, *list);
  }

  /// Where the pool's generic fields start.
  ZtString fieldPrefix() const;

 private:
  void field(const Tag& type, std::string_view name, std::string_view value);

  void beginRecords(std::string_view name);
  void endRecord();
  void endRecords();
  std::string_view nextColumn(const Tag& type, std::string_view name);
  void addColumn(const Tag& type, std::string_view name);
  void makeRoomForPiece(std::string_view name);

  void appendDate(ZtDate date);

  /// The start of a line, `depth` blanks behind the pool's own.
  std::string_view lead(std::size_t depth) const;

  /// More than any record has.
  static constexpr std::size_t kMostColumns = 16;

  std::string& _xml;
  bool _soap;
  std::size_t _prefixSize;
  Timestamps _timestamps;
  bool _inRecords = false;
  // First the prefix and the blanks of the deepest line. Then what stands before each value of a
  // record, and behind the last one, which is the same for all records of a list: put together for
  // the first one.
  std::string _pieces;
  std::array<std::size_t, kMostColumns + 1> _columnEnds{};  // in `_pieces`, the lead's own first
  std::size_t _columnCount = 0;
  std::size_t _column = 0;  // the next one of the record being written
  std::size_t _recordEndSize = 0;
};

}  // namespace zt
