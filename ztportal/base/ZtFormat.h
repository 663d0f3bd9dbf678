// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fmt/format.h>

#include <string_view>

#include "ztportal/base/ZtString.h"

/// Makes `ZtString` a value for {fmt} (https://fmt.dev), with the format options of a string. A
/// missing one is formatted as "(null)". `ztportal.h` does not include this header, which needs
/// fmt's own headers:
///
///     std::string name = fmt::format("{:>8}", ZtString("Home"));
template <>
struct fmt::formatter<ZtString> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const ZtString& text, Context& context) const {
    return fmt::formatter<std::string_view>::format(text.printed(), context);
  }
};
