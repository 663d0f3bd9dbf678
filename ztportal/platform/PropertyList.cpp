#include "ztportal/platform/PropertyList.h"

#include "ztportal/platform/BinaryPropertyList.h"
#include "ztportal/platform/PlistReader.h"
#include "ztportal/platform/ZtXMLDocument.h"

namespace zt {

// libplist takes a good deal for a property list, so both forms are looked at before.
std::optional<PropertyListStrings> parsePropertyList(std::string_view data) {
  if (isBinaryPropertyList(data)) {
    if (!copiesWithinMeasure(data) || !keysArePlainTexts(data)) return std::nullopt;
    return readPropertyList(data, PropertyListForm::Binary);
  }
  const auto document = ZtXMLDocument::parse(data);
  if (document == nullptr || document->rootElement()->name() != "plist") return std::nullopt;
  return readPropertyList(data, PropertyListForm::Xml);
}

}  // namespace zt
