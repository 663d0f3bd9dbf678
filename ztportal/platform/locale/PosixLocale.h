#pragma once

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

/// A POSIX locale name, language[_territory][.codeset][@modifier], in parts of its text.
struct PosixLocaleParts {
  std::string_view language;   ///< "de"
  std::string_view territory;  ///< "_DE", with what divides it from the language
  std::string_view modifier;   ///< "euro"
};

PosixLocaleParts posixLocaleParts(std::string_view name);

}  // namespace zt
