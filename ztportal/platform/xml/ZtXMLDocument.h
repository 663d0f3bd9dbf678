// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

class ZtXMLDocument;

/// A node of a parsed XML document: the document itself, an element, a text, a comment. A cheap
/// handle that keeps its document alive.
///
///     auto document = ZtXMLDocument::parse("<a xmlns:ns='urn:n'><ns:b key='1'>two</ns:b></a>");
///     ZtXMLNode root = *document->rootElement();
///     ZtXMLNode child = root.children().front();
///     child.name();                            // "ns:b"
///     child.text();                            // "two"
///     child.attributes().front().second;       // "1"
class ZT_EXPORT ZtXMLNode {
 public:
  /// The name as written, prefix included; the target of a processing instruction; missing for
  /// other nodes (texts, comments, entity references, the document and its type declaration).
  ZtString name() const;
  bool isElement() const;
  /// The concatenated text of the node and all its descendants, with entity references replaced;
  /// for a comment or a processing instruction its content. Never missing.
  ZtString text() const;
  /// The direct children in document order. Of a document: the root element and the comments and
  /// processing instructions beside it.
  std::vector<ZtXMLNode> children() const;
  /// Names, as written, and values of an element's attributes in document order, without namespace
  /// declarations and the defaults of the document type declaration.
  std::vector<std::pair<ZtString, ZtString>> attributes() const;

 private:
  friend class ZtXMLDocument;
  ZtXMLNode(std::shared_ptr<const ZtXMLDocument> document, const void* node);

  std::shared_ptr<const ZtXMLDocument> _document;
  const void* _node;
};

/// What a parsed document keeps of the text.
enum class ZtXMLKeep {
  /// The content: white space between elements is dropped, CDATA sections become text, and entity
  /// references are replaced by the entity's nodes. Elements that are nested deeper than 256 levels
  /// are refused; single texts above 10 MB may be refused.
  Content,
  /// Everything, so that the document can be written back unchanged. Without a document type
  /// declaration, depth and length are unlimited; with one, the limits of `Content` apply.
  Form
};

/// Why a text is not an XML document, and where the first error is.
struct ZtXMLError {
  std::size_t line = 0;    ///< from 1; 0 if the error has no position
  std::size_t column = 0;  ///< in characters, from 1; 0 with line 0
  ZtString reason;         ///< one line in English; may quote the text
};

/// A parsed XML 1.0 document, immutable. Nothing is fetched for it: no external entity, no DTD.
/// A text whose entities would expand excessively is refused like a malformed one, and so is one
/// that violates Namespaces in XML 1.0, for example by a prefix without a namespace declaration.
/// Nothing is printed. Any number of threads may use a document and its nodes at once.
class ZT_EXPORT ZtXMLDocument : public std::enable_shared_from_this<ZtXMLDocument> {
 public:
  /// Parses `text`, which is UTF-8 whatever its XML declaration says. Null if it is not well-formed
  /// or longer than 2 GiB; then `error`, unless it is null, is set.
  static std::shared_ptr<ZtXMLDocument> parse(std::string_view text,
                                              ZtXMLKeep keep = ZtXMLKeep::Content,
                                              ZtXMLError* error = nullptr);
  /// Parses the content of a file in the encoding of its byte order mark or else of its declaration
  /// (by default UTF-8). Null also for an unknown encoding. The position of an error is that in the
  /// file as an editor shows it.
  static std::shared_ptr<ZtXMLDocument> parseFileContent(std::string_view bytes,
                                                         ZtXMLKeep keep = ZtXMLKeep::Content,
                                                         ZtXMLError* error = nullptr);

  ZtXMLDocument(const ZtXMLDocument&) = delete;
  ZtXMLDocument& operator=(const ZtXMLDocument&) = delete;
  ~ZtXMLDocument();

  /// The document as a node; its children are the top-level nodes.
  ZtXMLNode documentNode() const;
  std::optional<ZtXMLNode> rootElement() const;

  /// The document as XML text in UTF-8. It has an XML declaration only if the parsed text had one,
  /// and an encoding in the declaration (then "UTF-8") only if that had one.
  ///
  /// With `ZtXMLKeep::Form` it is the parsed text, byte for byte, except for the encoding, a byte
  /// order mark, which is dropped, and the line ends, which are line feeds as for every XML
  /// processor. With `ZtXMLKeep::Content` the content is formatted again: attributes in double
  /// quotes, `<a/>` for an empty element, no white space outside the root element.
  std::string xmlText() const;

 private:
  friend class ZtXMLNode;
  ZtXMLDocument(void* document, ZtXMLKeep keep, std::string source);

  void* _document;
  ZtXMLKeep _keep;
  std::string _source;  // the whole text for Form, its XML declaration for Content
};
