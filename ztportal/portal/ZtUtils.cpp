// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ZtUtils.h"

#include <string_view>

#include "ztportal/platform/locale/UserLocale.h"

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// `text` without its first UTF-8 character.
std::string_view afterCharacter(std::string_view text) {
  std::size_t size = 1;
  while (size < text.size() && isContinuation(text[size])) ++size;
  return text.substr(size);
}

/// Matches "*" and "?". After a mismatch the last "*" matches one more character, so the time is at
/// most proportional to the product of both lengths.
bool matches(std::string_view text, std::string_view pattern) {
  bool starSeen = false;
  std::string_view starText;
  std::string_view starPattern;
  while (!text.empty()) {
    if (!pattern.empty() && pattern.front() == '*') {
      pattern.remove_prefix(1);
      starSeen = true;
      starText = text;
      starPattern = pattern;
    } else if (!pattern.empty() && pattern.front() == '?') {
      pattern.remove_prefix(1);
      text = afterCharacter(text);
    } else if (!pattern.empty() && pattern.front() == text.front()) {
      pattern.remove_prefix(1);
      text.remove_prefix(1);
    } else if (starSeen) {
      starText = afterCharacter(starText);
      text = starText;
      pattern = starPattern;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

template <class Predicate>
std::optional<ZtXMLNode> firstChild(const ZtXMLNode& node, Predicate isWanted) {
  for (const ZtXMLNode& child : node.children()) {
    if (child.isElement() && isWanted(child.name().view())) return child;
  }
  return std::nullopt;
}

}  // namespace

std::optional<ZtXMLNode> ZtUtils::childNamed(const ZtXMLNode& node, const ZtString& name) {
  return firstChild(node, [&name](std::string_view childName) { return name == childName; });
}

std::optional<ZtXMLNode> ZtUtils::childNamedLike(const ZtXMLNode& node, const ZtString& pattern) {
  if (pattern.isNull()) return std::nullopt;
  return firstChild(node, [&pattern](std::string_view childName) {
    return matches(zt::lowerCase(childName), pattern.view());
  });
}

std::vector<ZtString> ZtUtils::childrenAsStrings(const ZtXMLNode& node) {
  const std::vector<ZtXMLNode> children = node.children();
  std::vector<ZtString> texts;
  texts.reserve(children.size());
  for (const ZtXMLNode& child : children) texts.push_back(child.text());
  return texts;
}

std::map<std::string, ZtString> ZtUtils::nodesContentAsDictionary(const ZtXMLNode& element,
                                                                  const ZtString& name) {
  std::map<std::string, ZtString> content;
  for (const ZtXMLNode& child : element.children()) {
    if (name.isNull() || child.name() != name) continue;
    for (const auto& [key, value] : child.attributes()) {
      if (!key.isNull() && !value.isNull()) content[std::string(key.view())] = value;
    }
  }
  return content;
}
