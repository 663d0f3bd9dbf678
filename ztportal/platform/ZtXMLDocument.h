#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

class ZtXMLDocument;

/// A place in a parsed XML document: the document itself, an element, a text, a comment. A light
/// handle that is copied freely and keeps its document alive.
///
///     auto document = ZtXMLDocument::parse("<a><ns:b key='1'>two</ns:b></a>");
///     ZtXMLNode root = *document->rootElement();
///     ZtXMLNode child = root.children().front();
///     child.name();                            // "ns:b"
///     child.text();                            // "two"
///     child.attributes().front().second;       // "1"
class ZT_EXPORT ZtXMLNode {
 public:
  /// The name as written, prefix included; missing for what has none (texts, comments, the
  /// document).
  ZtString name() const;
  /// The concatenated text of the node and all below it; for a comment its content.
  ZtString text() const;
  /// The direct children in document order. Of a document: its top-level nodes.
  std::vector<ZtXMLNode> children() const;
  /// Names, as written, and values of an element's attributes in document order, namespace
  /// declarations not among them.
  std::vector<std::pair<ZtString, ZtString>> attributes() const;

 private:
  friend class ZtXMLDocument;
  ZtXMLNode(std::shared_ptr<const ZtXMLDocument> document, const void* node);

  std::shared_ptr<const ZtXMLDocument> _document;
  const void* _node;
};

/// What a parse keeps of the text.
enum class ZtXMLKeep {
  Content,  ///< the content: blank texts between elements are dropped, CDATA sections become text
  Form      ///< all of it, so that the document can be written back as it was
};

/// A parsed XML 1.0 document, immutable. Nothing is fetched for it: no external entity, no DTD.
/// A text whose entities would grow beyond measure is refused like a malformed one. Nothing is
/// printed. Different documents may be used by different threads.
class ZT_EXPORT ZtXMLDocument : public std::enable_shared_from_this<ZtXMLDocument> {
 public:
  /// Parses `text`, which is UTF-8 whatever its XML declaration says. Null when it is not
  /// well-formed.
  static std::shared_ptr<ZtXMLDocument> parse(std::string_view text,
                                              ZtXMLKeep keep = ZtXMLKeep::Content);
  /// Parses the content of a file, in the encoding that it declares (UTF-8 when it does not).
  static std::shared_ptr<ZtXMLDocument> parseFileContent(std::string_view bytes,
                                                         ZtXMLKeep keep = ZtXMLKeep::Content);

  ZtXMLDocument(const ZtXMLDocument&) = delete;
  ZtXMLDocument& operator=(const ZtXMLDocument&) = delete;
  ~ZtXMLDocument();

  /// The document as a node; its children are the top-level nodes.
  ZtXMLNode documentNode() const;
  std::optional<ZtXMLNode> rootElement() const;

  /// The document as XML text in UTF-8. Parsed with `ZtXMLKeep::Form` it is the parsed text again,
  /// but for what XML itself does not tell apart (line ends, the quotes of attributes, blanks
  /// inside tags); a declaration stands in it only if there was one.
  std::string xmlText() const;

 private:
  friend class ZtXMLNode;
  explicit ZtXMLDocument(void* document);

  void* _document;
};
