#include "ztportal/platform/linux/modules/Module.h"
#include "ztportal/platform/linux/modules/XmlModule.h"

namespace zt {

void* parseXmlTree(const std::string& text, ZtXMLKeep keep, XmlFault& fault) {
  if (const auto* xml = module<XmlModule>()) return xml->parse(text, keep, fault);
  fault = {"the library's module for XML is missing", std::nullopt};
  return nullptr;
}

// Where there is a tree, there is the module.

void releaseXmlTree(void* tree) { module<XmlModule>()->release(tree); }

std::string xmlTreeText(const void* tree) { return module<XmlModule>()->treeText(tree); }

const void* xmlTreeRoot(const void* tree) { return module<XmlModule>()->root(tree); }

ZtString xmlNodeName(const void* node) { return module<XmlModule>()->name(node); }

std::string xmlNodeText(const void* node) { return module<XmlModule>()->text(node); }

std::vector<const void*> xmlNodeChildren(const void* node, ZtXMLKeep keep) {
  return module<XmlModule>()->children(node, keep);
}

std::vector<std::pair<ZtString, ZtString>> xmlNodeAttributes(const void* node) {
  return module<XmlModule>()->attributes(node);
}

}  // namespace zt
