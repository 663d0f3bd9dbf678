// SPDX-License-Identifier: Apache-2.0
#include "libexec/DesktopEntry.h"

#include "fuzz/FuzzTarget.h"

// The desktop entry of an installed application.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto entry = zt::DesktopEntry::inText(zt::fuzz::textOf(data, size));
  if (entry.isHidden() || !entry.isUsable()) return 0;
  // The helper program prints texts that each end with a NUL byte.
  zt::fuzz::require(entry.name().find('\0') == std::string::npos);
  for (const std::string& word : entry.command()) {
    zt::fuzz::require(word.find('\0') == std::string::npos);
  }
  return 0;
}
