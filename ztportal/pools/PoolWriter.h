// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/pools/FieldTable.h"
#include "ztportal/pools/Markup.h"

namespace zt {

/// Writes a pool: the Data, Date and Fields lines, the fields of its table, and arrays of records.
///
///     PoolWriter pool(prefix, xml, soap);
///     pool.begin(poolType(), timeStamp());
///     pool.beginFields();
///     pool.fieldsOf(*this);
///     addFieldsToXml(pool.fieldPrefix(), xml, soap);
///     pool.endFields();
///     pool.end();
class PoolWriter {
 public:
  PoolWriter(const ZtString& prefix, std::string& xml, bool soap);
  PoolWriter(const PoolWriter&) = delete;
  PoolWriter& operator=(const PoolWriter&) = delete;
  ~PoolWriter();

  void begin(const ZtString& poolType, ZtDate timeStamp);
  void end();

  void beginFields();
  void endFields();
  /// Writes the single line of a pool without fields.
  void noFields();

  /// Writes the fields of a pool or record in the order of its table.
  template <class Object>
  void fieldsOf(const Object& object) {
    eachField<Object>([this, &object](const auto& row) { this->write(row, object); });
  }

  /// The prefix of the pool's generic fields.
  ZtString fieldPrefix() const;

 private:
  void write(const FalseField& row, const auto& /*object*/) { value(row.wireName, ZtBOOL{0}); }
  template <class Owner, class Member, bool kWritten>
  void write(const Field<Owner, Member, kWritten>& row, const std::type_identity_t<Owner>& object) {
    if constexpr (kWritten && std::is_same_v<Member, std::uint64_t>) {
      value(row.wireName, row.enumeration->nameOf(object.*row.member).view());
    } else if constexpr (kWritten) {
      value(row.wireName, object.*row.member);
    }
  }

  void value(std::string_view name, std::string_view text);
  void value(std::string_view name, const ZtAtomic<ZtString>& text);
  /// A string field with the text of a date.
  void value(std::string_view name, const ZtAtomic<ZtDate>& date);
  void value(std::string_view name, std::int32_t number);
  void value(std::string_view name, ZtBOOL flag);

  /// An array of records, one group of fields each. Null records are skipped, and nothing at all is
  /// written for an empty or missing list.
  template <class Record>
  void value(std::string_view name, const std::vector<std::shared_ptr<Record>>& list) {
    if (list.empty()) return;
    const auto nulls = std::count(list.begin(), list.end(), nullptr);
    beginRecords(name, list.size() - static_cast<std::size_t>(nulls));
    for (const auto& record : list) {
      if (record == nullptr) continue;
      beginRecord();
      fieldsOf(*record);
      endRecord();
    }
    endRecords();
  }
  template <class Record>
  void value(std::string_view name,
             const std::shared_ptr<std::vector<std::shared_ptr<Record>>>& list) {
    if (list != nullptr) value(name, *list);
  }
  template <class Record>
  void value(std::string_view name,
             const ZtAtomic<std::shared_ptr<std::vector<std::shared_ptr<Record>>>>& list) {
    value(name, list.load());
  }

  void field(const Tag& type, std::string_view name, std::string_view text);

  void beginRecords(std::string_view name, std::size_t count);
  void beginRecord();
  void endRecord();
  void endRecords();
  std::string_view nextColumn(const Tag& type, std::string_view name);
  void addColumn(const Tag& type, std::string_view name);
  void reservePiece(std::string_view name);
  void reserveMarkup();

  void appendDate(std::string& text, ZtDate date);

  /// The start of a line that is indented by `depth` spaces more than the pool.
  std::string_view lead(std::size_t depth) const;

  /// Larger than the number of columns of any record.
  static constexpr std::size_t kMostColumns = 16;

  std::string& _xml;
  bool _soap;
  std::size_t _prefixSize;
  Timestamps _timestamps;
  bool _inRecords = false;
  // Otherwise each field of a record is written on its own, since it may be left out.
  const bool _isPlain = valuesArePlain();
  ZtString _poolType;
  std::string_view _outerPoolType;
  // The prefix and the spaces of the deepest line; then, for the list that is being written, the
  // text before each value of a record and the text after the last one. They are the same for all
  // records of a list, and are collected while the first one is written.
  std::string _pieces;
  std::array<std::size_t, kMostColumns + 1> _columnEnds{};  // in `_pieces`, first that of the lead
  std::size_t _recordCount = 0;                             // of the list
  std::size_t _columnCount = 0;
  std::size_t _column = 0;  // the next column of the current record
  std::size_t _recordEndSize = 0;
};

/// Writes a typed pool: its frame, the fields of its table and then its generic fields.
template <class Pool>
void writePool(const Pool& pool, const ZtString& prefix, std::string& xml, bool soap) {
  PoolWriter writer(prefix, xml, soap);
  writer.begin(pool.poolType(), pool.timeStamp());
  writer.beginFields();
  writer.fieldsOf(pool);
  pool.addFieldsToXml(writer.fieldPrefix(), xml, soap);
  writer.endFields();
  writer.end();
}

}  // namespace zt
