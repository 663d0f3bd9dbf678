#pragma once

#include "ztportal/platform/XmlTree.h"

namespace zt {

/// What needs libxml2.
struct XmlModule {
  static constexpr const char* kName = "xml";

  decltype(&parseXmlTree) parse;
  decltype(&releaseXmlTree) release;
  decltype(&xmlTreeText) treeText;
  decltype(&xmlTreeRoot) root;
  decltype(&xmlNodeName) name;
  decltype(&xmlNodeText) text;
  decltype(&xmlNodeChildren) children;
  decltype(&xmlNodeAttributes) attributes;
};

}  // namespace zt
