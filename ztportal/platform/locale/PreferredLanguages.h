#pragma once

#include <string>
#include <vector>

namespace zt {

/// The user's languages, most preferred first, without repetitions: those of `LANGUAGE`, then that
/// of the first of `LC_ALL`, `LC_MESSAGES` and `LANG` that is set and not empty. As with gettext,
/// `LANGUAGE` counts only when those name a language. Empty when none is named.
///
/// The codes are language tags (BCP 47) as short as they can be: the region is left out where it
/// is the language's main one ("de_DE" gives "de", "de_AT" gives "de-AT"), but is kept as written
/// for English and Portuguese; Chinese has its script instead ("zh_TW" gives "zh-Hant").
std::vector<std::string> preferredLanguages();

}  // namespace zt
