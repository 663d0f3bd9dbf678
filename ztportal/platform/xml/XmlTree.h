#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

// The trees behind ZtXMLDocument, which are libxml2's. A `tree` is the address of a parsed
// document, a `node` that of the document or of anything in it; both are valid until the tree is
// released. Entity references remain references in the tree; the functions below replace them.

namespace zt {

/// Why a text is refused, and the index of the byte at fault, if it is a single one.
struct XmlFault {
  std::string reason;
  std::optional<std::size_t> offset;
};

/// Parses `text`, which is UTF-8 without NUL bytes and byte order mark. Null when it is not
/// namespace-well-formed, too long, or its entities grow beyond measure; then `fault` is set. The
/// caller releases the tree.
void* parseXmlTree(const std::string& text, ZtXMLKeep keep, XmlFault& fault);
void releaseXmlTree(void* tree);

/// The top-level nodes written anew, one after the other, without XML declaration.
std::string xmlTreeText(const void* tree);
const void* xmlTreeRoot(const void* tree);

// As ZtXMLNode's operations of the same names.
ZtString xmlNodeName(const void* node);
bool xmlNodeIsElement(const void* node);
std::string xmlNodeText(const void* node);
std::vector<const void*> xmlNodeChildren(const void* node, ZtXMLKeep keep);
std::vector<std::pair<ZtString, ZtString>> xmlNodeAttributes(const void* node);

}  // namespace zt
