// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/plist/PropertyList.h"

#include "fuzz/FuzzTarget.h"
#include "ztportal/base/Utf8.h"

// The property list of a bundle, XML or binary.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto strings = zt::parsePropertyList(zt::fuzz::textOf(data, size));
  if (!strings) return 0;
  for (const auto& [key, value] : *strings) zt::fuzz::require(zt::isUtf8(value.view()));
  return 0;
}
