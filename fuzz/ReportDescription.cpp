// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FuzzTarget.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/portal/ZtReportDescription.h"

// A report description in JSON, as `ztreport` reads it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const ZtReportDescription description(zt::fuzz::textOf(data, size));
  return 0;
} catch (const ZtException& error) {
  zt::fuzz::require(*error.what() != '\0');
  return 0;
}
