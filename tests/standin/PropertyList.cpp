#include "ztportal/platform/PropertyList.h"

#include <vector>

#include "ztportal/platform/ZtXMLDocument.h"

// A stand-in that reads the XML form alone.

namespace zt {
namespace {

std::vector<ZtXMLNode> elementsOf(const ZtXMLNode& node) {
  std::vector<ZtXMLNode> elements;
  for (const ZtXMLNode& child : node.children()) {
    if (!child.name().isNull()) elements.push_back(child);
  }
  return elements;
}

}  // namespace

std::optional<PropertyListStrings> parsePropertyList(std::string_view data) {
  const auto document = ZtXMLDocument::parse(data);
  if (document == nullptr || document->rootElement()->name() != "plist") return std::nullopt;
  const std::vector<ZtXMLNode> values = elementsOf(*document->rootElement());
  if (values.size() != 1 || values.front().name() != "dict") return std::nullopt;

  const std::vector<ZtXMLNode> entries = elementsOf(values.front());
  if (entries.size() % 2 != 0) return std::nullopt;
  PropertyListStrings strings;
  for (std::size_t i = 0; i < entries.size(); i += 2) {
    const ZtXMLNode& value = entries[i + 1];
    if (entries[i].name() != "key") return std::nullopt;
    strings.insert_or_assign(std::string(entries[i].text().view()),
                             value.name() == "string" ? value.text() : nullptr);
  }
  return strings;
}

}  // namespace zt
