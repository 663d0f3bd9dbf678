#pragma once

#include <string>
#include <string_view>

namespace zt {

/// Language tags (BCP 47) as functions of texts. An empty tag stands for no language and gives an
/// empty answer everywhere.

/// The canonical tag of a language's or localization's name: a tag or locale identifier in any
/// letter case, with hyphens or underscores, or one of the English names that localizations bore
/// before they had codes. Empty for a text that names no language.
///
///     canonicalLanguageTag("pt_BR");           // "pt-BR"
///     canonicalLanguageTag("German");          // "de"
///     canonicalLanguageTag("Base");            // ""
std::string canonicalLanguageTag(std::string_view name);

struct LanguageParts {
  std::string language;
  std::string script;  ///< empty where the tag has none
  std::string region;  ///< empty where the tag has none
};

LanguageParts languageParts(const std::string& tag);

/// `tag` with the script and region that are most likely for it (Unicode TR 35, likely subtags):
/// "zh-TW" gives "zh-Hant-TW".
std::string withLikelySubtags(const std::string& tag);
/// `tag` without the script and region that go without saying: "de-DE" gives "de".
std::string withoutLikelySubtags(const std::string& tag);

}  // namespace zt
