#pragma once

#include <string>
#include <string_view>

namespace zt {

/// The user's locale for `category` as the environment names it: the first of `LC_ALL`, the
/// category's own variable and `LANG` that is set and not empty; "C" when none is. Valid until the
/// environment changes.
///
///     userLocaleName("LC_TIME");               // "de_DE.UTF-8"
std::string_view userLocaleName(const char* category);

/// Whether the POSIX locale name `name` has no language: "C" and "POSIX", with or without a
/// codeset, and every text that is no locale name. The C library takes those for "C" as well.
bool isPosixLocale(std::string_view name);

/// The Unicode locale identifier of the POSIX name `name`, language[_territory][.codeset]
/// [@modifier]: without the codeset, and with the script or variant that the modifier stands for.
/// Modifiers that say nothing about language or calendar ("euro") are dropped; a modifier with an
/// equals sign is a list of keywords and is kept.
///
///     icuLocaleName("sr_RS.UTF-8@latin");      // "sr_Latn_RS"
///     icuLocaleName("C.UTF-8");                // "en_US_POSIX"
std::string icuLocaleName(std::string_view name);

}  // namespace zt
