// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace zt {

/// The user's locale for `category` according to the environment: the first of `LC_ALL`, the
/// category's own variable and `LANG` that is set and not empty; "C" if none is. Valid until the
/// environment changes.
///
///     userLocaleName("LC_TIME");               // "de_DE.UTF-8"
std::string_view userLocaleName(const char* category);

/// Whether the POSIX locale name `name` has no language: "C" and "POSIX", with or without a
/// codeset, and every string that is not a locale name. The C library also treats those as "C".
bool isPosixLocale(std::string_view name);

/// A POSIX locale name, language[_territory][.codeset][@modifier], in parts.
struct PosixLocaleParts {
  std::string_view language;   ///< "de"
  std::string_view territory;  ///< "_DE", with the separator
  std::string_view modifier;   ///< "euro"
};

PosixLocaleParts posixLocaleParts(std::string_view name);

/// The Unicode locale identifier of the POSIX name `name`, language[_territory][.codeset]
/// [@modifier]: without the codeset, and with the script or variant that the modifier means.
/// Modifiers that concern neither language nor calendar ("euro") are dropped; a modifier with an
/// equals sign is a list of keywords and is kept.
///
///     icuLocaleName("sr_RS.UTF-8@latin");      // "sr_Latn_RS"
///     icuLocaleName("C.UTF-8");                // "en_US_POSIX"
std::string icuLocaleName(std::string_view name);

}  // namespace zt
