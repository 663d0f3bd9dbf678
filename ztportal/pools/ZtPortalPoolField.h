#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// A named field of a pool. Without a value of any kind it is a bare field; the value fields and
/// the array derive from it.
///
/// A field is owned by the array that it was added to and shared with whoever holds it. It is
/// filled and written by one thread at a time.
class ZT_EXPORT ZtPortalPoolField {
 protected:
  /// Lets only this family of classes construct; others call the creating functions.
  struct Creation {
    explicit Creation() = default;
  };

 public:
  static std::shared_ptr<ZtPortalPoolField> initWithName(const ZtString& name);

  ZtPortalPoolField(Creation /*creation*/, ZtString name);
  ZtPortalPoolField(const ZtPortalPoolField&) = delete;
  ZtPortalPoolField& operator=(const ZtPortalPoolField&) = delete;
  virtual ~ZtPortalPoolField();

  /// Appends the field's lines to `xml`, each of them starting with `prefix` and ending with
  /// CR LF; with `soap` the start tags carry their SOAP types.
  virtual void addToXml(const ZtString& prefix, std::string& xml, bool soap) const;

  const ZtString& fieldName() const { return _fieldName; }
  /// The name is kept as it is: any text, missing ("(null)" when written), several times the same.
  void setFieldName(ZtString value) { _fieldName = std::move(value); }

 private:
  ZtString _fieldName;
};
