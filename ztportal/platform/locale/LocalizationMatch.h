#pragma once

#include <string>
#include <vector>

#include "ztportal/base/ZtString.h"

namespace zt {

/// Those of the localizations `available` that suit a user with the languages `preferred`, best
/// match first. For each language in turn: the localization of that very language, then the one
/// without region and script, then those of other regions that are written in the same script.
/// When no language finds any, the one that is `developmentRegion`, if it is there.
///
/// The answers are spelled as in `available`; names are compared by their canonical identifiers,
/// so "pt_BR" is "pt-BR", "German" is "de", and "zh_TW" is "zh-Hant".
///
///     matchLocalizations({"English", "de", "fr"}, {"de-AT", "en-US"}, "English");
///         // "de", "English"
std::vector<ZtString> matchLocalizations(const std::vector<std::string>& available,
                                         const std::vector<std::string>& preferred,
                                         const ZtString& developmentRegion);

}  // namespace zt
