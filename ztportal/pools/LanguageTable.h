// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The name of a `ZtLanguage` in reports; empty for other numbers and, deliberately,
/// for Serbian: servers have never had a name for it.
const ZtString& languageName(std::uint64_t language);

/// The `ZtLanguage` of a language code (a BCP 47 tag such as "pt-BR"); neutral for a code that is
/// not exactly in the table.
std::uint64_t languageOfCode(std::string_view code);

}  // namespace zt
