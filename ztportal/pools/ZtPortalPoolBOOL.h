// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/pools/ZtPortalPoolField.h"

/// A field with a boolean byte, which is stored as given; only 1 is written as true.
class ZT_EXPORT ZtPortalPoolBOOL final : public ZtPortalPoolField {
 public:
  static std::shared_ptr<ZtPortalPoolBOOL> initWithNameAndValue(const ZtString& name, ZtBOOL value);

  ZtPortalPoolBOOL(Creation creation, ZtString name, ZtBOOL value);
  ~ZtPortalPoolBOOL() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  ZtBOOL data() const { return _data; }
  void setData(ZtBOOL value) { _data = value; }

 private:
  ZtBOOL _data;
};
