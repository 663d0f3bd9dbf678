// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/base/ZtAtomic.h"
#include "ztportal/pools/ZtPortalPoolField.h"

/// A field with a string. Reads and writes of the value are atomic.
class ZT_EXPORT ZtPortalPoolString final : public ZtPortalPoolField {
 public:
  static std::shared_ptr<ZtPortalPoolString> initWithNameAndValue(const ZtString& name,
                                                                  ZtString value);

  ZtPortalPoolString(Creation creation, ZtString name, ZtString value);
  ~ZtPortalPoolString() override;

  void addToXml(const ZtString& prefix, std::string& xml, bool soap) const override;

  ZtString data() const { return _data.load(); }
  void setData(ZtString value) { _data.store(std::move(value)); }

 private:
  ZtAtomic<ZtString> _data;
};
