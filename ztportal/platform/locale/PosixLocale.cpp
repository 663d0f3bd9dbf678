#include "ztportal/platform/locale/PosixLocale.h"

#include <algorithm>
#include <cstdlib>

namespace zt {
namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

}  // namespace

std::string_view userLocaleName(const char* category) {
  for (const char* variable : {"LC_ALL", category, "LANG"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "C";
}

PosixLocaleParts posixLocaleParts(std::string_view name) {
  const std::string_view body = name.substr(0, name.find_first_of(".@"));
  const std::string_view language = body.substr(0, body.find_first_of("_-"));
  const std::size_t at = std::min(name.find('@'), name.size());
  return {language, body.substr(language.size()), name.substr(std::min(at + 1, name.size()))};
}

bool isPosixLocale(std::string_view name) {
  const std::string_view language = posixLocaleParts(name).language;
  const bool isLanguage = (language.size() == 2 || language.size() == 3) &&
                          std::all_of(language.begin(), language.end(), isLetter);
  return !isLanguage;
}

}  // namespace zt
