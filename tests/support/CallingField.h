// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "ztportal/pools/ZtPortalPoolField.h"

namespace zt::test {

/// A host's own field, which calls a function when it is written and writes the line "called".
class CallingField final : public ZtPortalPoolField {
 public:
  explicit CallingField(std::function<void()> function)
      : ZtPortalPoolField(Creation{}, "CALLING"), _function(std::move(function)) {}
  void addToXml(const ZtString& /*prefix*/, std::string& xml, bool /*soap*/) const override {
    _function();
    xml += "called\r\n";
  }

 private:
  std::function<void()> _function;
};

}  // namespace zt::test
