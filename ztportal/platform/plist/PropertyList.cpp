#include "ztportal/platform/plist/PropertyList.h"

#include "ztportal/platform/plist/BinaryPropertyList.h"
#include "ztportal/platform/plist/PlistReader.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

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
