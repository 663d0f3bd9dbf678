// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"
#include "ztportal/pools/ZtPortalPoolField.h"
#include "ztportal/pools/ZtPortalPoolFloat.h"
#include "ztportal/pools/ZtPortalPoolInteger.h"
#include "ztportal/pools/ZtPortalPoolString.h"

/// A field that contains fields, including other arrays, to any depth.
///
///     auto disks = pool->addArray("DISKS");
///     disks->addString("NAME", "sda");
///     disks->addInteger("SIZE_GB", 512);
///     disks->field(1)->fieldName();            // "SIZE_GB"
///
/// In its text, `</Date>` closes the name and `</Data>` the array itself. Neither matches its start
/// tag. This is deliberate, because servers expect exactly these lines; but it means that a report
/// with an array is not well-formed XML.
class ZT_EXPORT ZtPortalPoolArray final : public ZtPortalPoolField {
 public:
  using Fields = std::vector<std::shared_ptr<ZtPortalPoolField>>;

  static std::shared_ptr<ZtPortalPoolArray> initWithName(const ZtString& name);

  ZtPortalPoolArray(Creation creation, ZtString name);
  ~ZtPortalPoolArray() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  /// A snapshot of the children, in the order in which they were added.
  Fields fields() const;
  /// The list of children itself, which is shared: changing it changes the array. An array whose
  /// list is set to null has no children and accepts none.
  const std::shared_ptr<Fields>& mutableFields() const { return _mutableFields; }
  void setMutableFields(std::shared_ptr<Fields> value) { _mutableFields = std::move(value); }

  /// The child at `index`. Throws `ZtException` "OUT_OF_BOUNDS" for a negative index or one above
  /// the last; in an array without children every other index throws the list's own range error,
  /// which has another name. Callers distinguish the two.
  std::shared_ptr<ZtPortalPoolField> field(std::int32_t index) const;
  /// Removes the child at `index`. Throws like `field`, without a change.
  void deleteField(std::int32_t index);

  /// Each adds a child at the end and returns it, null if it cannot be added. Names need be
  /// neither unique nor present.
  std::shared_ptr<ZtPortalPoolArray> addArray(const ZtString& name);
  std::shared_ptr<ZtPortalPoolString> addString(const ZtString& name, ZtString value);
  std::shared_ptr<ZtPortalPoolInteger> addInteger(const ZtString& name, std::int32_t value);
  std::shared_ptr<ZtPortalPoolFloat> addFloat(const ZtString& name, float value);
  std::shared_ptr<ZtPortalPoolBOOL> addBOOL(const ZtString& name, ZtBOOL value);

 private:
  friend class ZtPortalPool;
  void addChildrenToXml(const ZtString& prefix, std::string& xml, bool soap) const;
  std::size_t count() const { return _mutableFields != nullptr ? _mutableFields->size() : 0; }

  std::shared_ptr<Fields> _mutableFields;
};
