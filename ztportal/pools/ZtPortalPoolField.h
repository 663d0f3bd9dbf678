// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// A named field of a pool. This class is a bare field, which has no value; the fields with values
/// and the array derive from it.
///
/// The array that contains the field and everyone who has a pointer to it share ownership. One
/// thread at a time may fill and write it.
class ZT_EXPORT ZtPortalPoolField {
 protected:
  /// Only this class and those derived from it can construct; others call the static functions.
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolField> initWithName(const ZtString& name);

  ZtPortalPoolField(Creation /*creation*/, ZtString name);
  ZtPortalPoolField(const ZtPortalPoolField&) = delete;
  ZtPortalPoolField& operator=(const ZtPortalPoolField&) = delete;
  virtual ~ZtPortalPoolField();

  /// Appends the field's lines to `xml`; each line starts with `prefix` and ends with CR LF. With
  /// `soap` the start tags have SOAP types.
  virtual void addToXml(const ZtString& prefix, std::string& xml, bool soap) const;

  const ZtString& fieldName() const { return _fieldName; }
  /// Any string, not necessarily unique; a missing one is written as "(null)".
  void setFieldName(ZtString value) { _fieldName = std::move(value); }

 private:
  ZtString _fieldName;
};
