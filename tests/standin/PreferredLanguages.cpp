#include "ztportal/platform/PreferredLanguages.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

// A stand-in that does not look at `LANGUAGE` and knows the main regions of a few languages.

namespace zt {
namespace {

struct Shortened {
  std::string_view localeName;
  std::string_view tag;
};
constexpr Shortened kShortened[] = {
    {"de_DE", "de"}, {"ga_IE", "ga"}, {"nb_NO", "nb"}, {"sr_RS", "sr"}, {"zh_CN", "zh-Hans"},
};

std::string_view localeName() {
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const name = std::getenv(variable);
    if (name != nullptr && *name != '\0') return name;
  }
  return "C";
}

}  // namespace

std::vector<std::string> preferredLanguages() {
  std::string name(localeName());
  name.erase(std::min(name.find_first_of(".@"), name.size()));
  if (name == "C" || name == "POSIX") return {};
  for (const Shortened& row : kShortened) {
    if (row.localeName == name) return {std::string(row.tag)};
  }
  std::replace(name.begin(), name.end(), '_', '-');
  return {name};
}

}  // namespace zt
