#pragma once

#include <string>
#include <string_view>

namespace zt {

/// The Unicode locale identifier of the POSIX name `name`, language[_territory][.codeset]
/// [@modifier]: without the codeset, and with the script or variant that the modifier stands for.
/// Modifiers that say nothing about language or calendar ("euro") are dropped; a modifier with an
/// equals sign is a list of keywords and is kept.
///
///     icuLocaleName("sr_RS.UTF-8@latin");      // "sr_Latn_RS"
///     icuLocaleName("C.UTF-8");                // "en_US_POSIX"
std::string icuLocaleName(std::string_view name);

}  // namespace zt
