#include "fuzz/FuzzTarget.h"
#include "tools/ztreport/description/Description.h"

// A report description in JSON, as `ztreport` reads it.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const zt::tools::Description description{std::string(zt::fuzz::textOf(data, size))};
  return 0;
} catch (const zt::JsonError& error) {
  zt::fuzz::require(*error.what() != '\0');
  return 0;
}
