// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/xml/ZtXMLDocument.h"

#include <algorithm>

#include "ztportal/base/Free.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/xml/XmlText.h"
#include "ztportal/platform/xml/XmlTree.h"

namespace {

using zt::XmlFault;
using Tree = std::unique_ptr<void, zt::Free<zt::releaseXmlTree>>;

/// Describes `fault`, which is in `text`, in `error`, unless that is null.
void report(ZtXMLError* error, const XmlFault& fault, std::string_view text) {
  if (error == nullptr) return;
  *error = {0, 0, fault.reason};
  if (!fault.offset) return;
  const zt::XmlPlace place = zt::xmlPlace(text, *fault.offset);
  error->line = place.line;
  error->column = place.column;
}

}  // namespace

ZtXMLNode::ZtXMLNode(std::shared_ptr<const ZtXMLDocument> document, const void* node)
    : _document(std::move(document)), _node(node) {}

ZtString ZtXMLNode::name() const { return zt::xmlNodeName(_node); }

bool ZtXMLNode::isElement() const { return zt::xmlNodeIsElement(_node); }

ZtString ZtXMLNode::text() const { return zt::xmlNodeText(_node); }

std::vector<ZtXMLNode> ZtXMLNode::children() const {
  const std::vector<const void*> list = zt::xmlNodeChildren(_node, _document->_keep);
  std::vector<ZtXMLNode> children;
  children.reserve(list.size());
  for (const void* child : list) children.push_back(ZtXMLNode(_document, child));
  return children;
}

std::vector<std::pair<ZtString, ZtString>> ZtXMLNode::attributes() const {
  return zt::xmlNodeAttributes(_node);
}

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parse(std::string_view text, ZtXMLKeep keep,
                                                    ZtXMLError* error) {
  // libxml2 would stop reading at a NUL byte after the root element.
  const std::size_t good = std::min(text.find('\0'), zt::utf8Length(text));
  if (good < text.size()) {
    const char* reason = text[good] == '\0' ? "a NUL byte" : "a byte that is not UTF-8";
    report(error, {reason, text.size()}, text.substr(0, good));
    return nullptr;
  }
  std::string source = zt::xmlTextInUtf8(text);
  // libxml2 also skips a byte order mark; but no document can start with a second one.
  if (source.starts_with(zt::kByteOrderMark)) {
    report(error, {"a second byte order mark", 0}, text);
    return nullptr;
  }
  XmlFault fault;
  Tree tree(zt::parseXmlTree(source, keep, fault));
  if (!tree) {
    report(error, fault, text);
    return nullptr;
  }
  if (keep == ZtXMLKeep::Content) source.resize(zt::xmlDeclaration(source).size());
  return std::shared_ptr<ZtXMLDocument>(new ZtXMLDocument(tree.release(), keep, std::move(source)));
}

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parseFileContent(std::string_view bytes,
                                                               ZtXMLKeep keep, ZtXMLError* error) {
  const std::string encoding = zt::xmlFileEncoding(bytes);
  if (encoding == "UTF-8") return parse(bytes, keep, error);
  const std::optional<std::string> text = zt::utf8From(bytes, encoding);
  if (text) return parse(*text, keep, error);
  report(error, {"not in its encoding, " + encoding, std::nullopt}, bytes);
  return nullptr;
}

ZtXMLDocument::ZtXMLDocument(void* document, ZtXMLKeep keep, std::string source)
    : _document(document), _keep(keep), _source(std::move(source)) {}

ZtXMLDocument::~ZtXMLDocument() { zt::releaseXmlTree(_document); }

ZtXMLNode ZtXMLDocument::documentNode() const { return {shared_from_this(), _document}; }

std::optional<ZtXMLNode> ZtXMLDocument::rootElement() const {
  return ZtXMLNode(shared_from_this(), zt::xmlTreeRoot(_document));
}

std::string ZtXMLDocument::xmlText() const {
  if (_keep == ZtXMLKeep::Form) return _source;
  return _source + zt::xmlTreeText(_document);
}
