// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtPortalPoolArray.h"

namespace zt {
template <class Object>
struct Fields;
}

/// A group of fields in a report: a type, a timestamp and a tree of named fields. A generic pool is
/// for values for which there is no typed pool; the typed pools derive from it and write their own
/// fields before the generic ones.
///
///     auto pool = document->addPool("CUSTOM", ZtDate::now());
///     pool->addString("RESULT", "OK");
///     pool->addArray("COUNTS")->addInteger("COPIED", 7);
///
/// Lifecycle: the report document creates and owns it; the host may fill it at any time; whenever
/// the document is written, the pool writes its current values; it is destroyed with the document.
/// One thread at a time may fill and write it; single reads and writes of `fields`, `poolType` and
/// `timeStamp` are atomic.
class ZT_EXPORT ZtPortalPool {
 protected:
  /// Only this class and those derived from it can construct; others call the static functions.
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPool> initWithValues(const ZtString& poolType,
                                                      const ZtDate& timeStamp);

  ZtPortalPool(Creation creation, ZtString poolType, ZtDate timeStamp);
  ZtPortalPool(const ZtPortalPool&) = delete;
  ZtPortalPool& operator=(const ZtPortalPool&) = delete;
  virtual ~ZtPortalPool();

  /// Appends the whole pool to `xml`; each line starts with `prefix` and ends with CR LF. With
  /// `soap` the start tags have SOAP types.
  virtual void addToXml(const ZtString& prefix, std::string& xml, bool soap) const;
  /// Appends only the generic fields; each line starts with `prefix`.
  void addFieldsToXml(const ZtString& prefix, std::string& xml, bool soap) const;

  /// The generic field at `index`; throws like `ZtPortalPoolArray::field`.
  std::shared_ptr<ZtPortalPoolField> field(std::int32_t index) const;
  /// Each adds a generic field at the end and returns it, null if it cannot be added.
  std::shared_ptr<ZtPortalPoolArray> addArray(const ZtString& name);
  std::shared_ptr<ZtPortalPoolString> addString(const ZtString& name, ZtString value);
  std::shared_ptr<ZtPortalPoolInteger> addInteger(const ZtString& name, std::int32_t value);
  std::shared_ptr<ZtPortalPoolFloat> addFloat(const ZtString& name, float value);
  std::shared_ptr<ZtPortalPoolBOOL> addBOOL(const ZtString& name, ZtBOOL value);

  /// The root of the generic fields, an array named "Root"; its own name is never written. A pool
  /// whose root is set to null has no generic fields and accepts none.
  std::shared_ptr<ZtPortalPoolArray> fields() const { return _fields.load(); }
  void setFields(std::shared_ptr<ZtPortalPoolArray> value) { _fields.store(std::move(value)); }
  ZtString poolType() const { return _poolType.load(); }
  void setPoolType(ZtString value) { _poolType.store(std::move(value)); }
  ZtDate timeStamp() const { return _timeStamp.load(); }
  void setTimeStamp(const ZtDate& value) { _timeStamp.store(value); }

 private:
  friend struct zt::Fields<ZtPortalPool>;

  ZtAtomic<std::shared_ptr<ZtPortalPoolArray>> _fields;
  ZtAtomic<ZtString> _poolType;
  ZtAtomic<ZtDate> _timeStamp;
};
