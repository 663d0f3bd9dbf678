// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "ztportal/pools/ZtPortalPoolField.h"

/// A field with a 32-bit signed integer.
class ZT_EXPORT ZtPortalPoolInteger final : public ZtPortalPoolField {
 public:
  static std::shared_ptr<ZtPortalPoolInteger> initWithNameAndValue(const ZtString& name,
                                                                   std::int32_t value);

  ZtPortalPoolInteger(Creation creation, ZtString name, std::int32_t value);
  ~ZtPortalPoolInteger() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  std::int32_t data() const { return _data; }
  void setData(std::int32_t value) { _data = value; }

 private:
  std::int32_t _data;
};
