// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/Printing.h"
#include "tests/support/ReportOutline.h"
#include "tests/support/ScopedEnvironment.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtException.h"

namespace zt::test {

/// Dates are written in UTC and the C locale, whatever the machine is set to.
class PoolsFixture : public ::testing::Test {
 private:
  ScopedEnvironment _zone{"TZ", "UTC"};
  ScopedEnvironment _locale{"LC_ALL", "C"};
};

/// Written "2026-11-21T12:00:00.123UTC".
inline constexpr ZtDate kNoon = ZtDate::fromMilliseconds(1795262400123);
/// Written "2026-11-21T12:00:01.250UTC".
inline constexpr ZtDate kLater = ZtDate::fromMilliseconds(1795262401250);
/// Written "1970-01-01T00:00:00.000UTC".
inline constexpr ZtDate kEpoch = ZtDate::fromMilliseconds(0);

/// "NAME: reason" of the `ZtException` that `call` throws.
template <class Call>
std::string thrownBy(Call call) {
  try {
    call();
  } catch (const ZtException& error) {
    return std::string(error.name().view()) + ": " + std::string(error.reason().view());
  }
  return "nothing";
}

/// What `writer` (a field, a pool) appends to an empty text.
template <class Writer>
std::string written(const Writer& writer, const ZtString& prefix, bool soap) {
  std::string xml;
  writer.addToXml(prefix, xml, soap);
  return xml;
}

/// The text of a pool of `kNoon` with the fields of an outline (`ReportOutline.h`).
inline std::string poolText(const std::string& type, std::string_view outline, bool soap = false,
                            std::size_t indent = 0) {
  return crlf(poolLines(type, "2026-11-21T12:00:00.123UTC", outline, soap, indent));
}

}  // namespace zt::test
