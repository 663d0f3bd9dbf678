// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/pools/ZtPortalPoolField.h"

/// A field with a 32-bit floating-point number.
class ZT_EXPORT ZtPortalPoolFloat final : public ZtPortalPoolField {
 public:
  static std::shared_ptr<ZtPortalPoolFloat> initWithNameAndValue(const ZtString& name, float value);

  ZtPortalPoolFloat(Creation creation, ZtString name, float value);
  ~ZtPortalPoolFloat() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  float data() const { return _data; }
  void setData(float value) { _data = value; }

 private:
  float _data;
};
