// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The strings of a property list's top-level dictionary. The value of any other kind of entry is
/// missing.
using PropertyListStrings = std::map<std::string, ZtString>;

/// Parses a property list, XML or binary. Nullopt if `data` is neither or its top level is not a
/// dictionary.
std::optional<PropertyListStrings> parsePropertyList(std::string_view data);

}  // namespace zt
