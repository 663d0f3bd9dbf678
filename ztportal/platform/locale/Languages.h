// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

// Language tags (BCP 47). An empty tag means no language; functions of it return empty values.

/// The canonical tag of a language's or localization's name: a tag or locale identifier in any
/// letter case, with hyphens or underscores, or one of the English names of old localizations.
/// Empty if `name` is no language.
///
///     canonicalLanguageTag("pt_BR");           // "pt-BR"
///     canonicalLanguageTag("German");          // "de"
///     canonicalLanguageTag("Base");            // ""
std::string canonicalLanguageTag(std::string_view name);

struct LanguageParts {
  std::string language;
  std::string script;  ///< empty if the tag has none
  std::string region;  ///< empty if the tag has none
};

LanguageParts languageParts(const std::string& tag);

/// `tag` with the script and region that are most likely for it (Unicode TR 35, likely subtags):
/// "zh-TW" gives "zh-Hant-TW".
std::string withLikelySubtags(const std::string& tag);

/// The user's languages, most preferred first, without repetitions: those of `LANGUAGE`, then that
/// of the first of `LC_ALL`, `LC_MESSAGES` and `LANG` that is set and not empty. As with gettext,
/// "C" and "POSIX" mean English, and `LANGUAGE` does not count in that locale. Never empty: where
/// no language is named it is "en".
///
/// The tags are those of the languages of reports, without their regions ("de_AT" gives "de")
/// except for English ("en-GB"), "nl-BE", "pt-BR" and "pt-PT"; Chinese has its script ("zh_TW"
/// gives "zh-Hant").
std::vector<std::string> preferredLanguages();

/// Those of the localizations `available` that suit a user with the languages `preferred`, best
/// match first. For each language in turn: the localization of exactly that language, then the one
/// without region and script, then those of other regions with the same script. If there is none
/// for any language, `developmentRegion`, if it is available.
///
/// The results are spelled as in `available`; names are compared by their canonical tags, so
/// "pt_BR" is "pt-BR", "German" is "de", and "zh_TW" is "zh-Hant".
///
///     matchLocalizations({"English", "de", "fr"}, {"de-AT", "en-US"}, "English");
///         // "de", "English"
std::vector<ZtString> matchLocalizations(const std::vector<std::string>& available,
                                         const std::vector<std::string>& preferred,
                                         const ZtString& developmentRegion);

}  // namespace zt
