// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/Metainfo.h"

#include "fuzz/FuzzTarget.h"
#include "ztportal/base/Utf8.h"

// The metainfo file of an installed application.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = zt::fuzz::textOf(data, size);
  zt::fuzz::require(zt::isUtf8(zt::newestReleaseIn(content, "mail.desktop")));
  return 0;
}
