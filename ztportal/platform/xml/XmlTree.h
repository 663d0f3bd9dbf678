// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

// The libxml2 trees behind ZtXMLDocument. A `tree` is the address of a parsed document, a `node`
// the address of the document or of a node in it; both are valid until the tree is released. The
// tree contains entity references unexpanded; the functions below replace them.

namespace zt {

/// Why a text is refused, and the index of the byte that is wrong, if there is one.
struct XmlFault {
  std::string reason;
  std::optional<std::size_t> offset;
};

/// Parses `text`, which is UTF-8 without NUL bytes and byte order mark. Null if it is not
/// namespace-well-formed, is too long, or has entities that expand excessively; then `fault` is
/// set. The caller releases the tree.
void* parseXmlTree(const std::string& text, ZtXMLKeep keep, XmlFault& fault);
void releaseXmlTree(void* tree);

/// Writes the top-level nodes, one after the other, without an XML declaration.
std::string xmlTreeText(const void* tree);
const void* xmlTreeRoot(const void* tree);

// Like ZtXMLNode's operations with the same names.
ZtString xmlNodeName(const void* node);
bool xmlNodeIsElement(const void* node);
std::string xmlNodeText(const void* node);
std::vector<const void*> xmlNodeChildren(const void* node, ZtXMLKeep keep);
std::vector<std::pair<ZtString, ZtString>> xmlNodeAttributes(const void* node);

}  // namespace zt
