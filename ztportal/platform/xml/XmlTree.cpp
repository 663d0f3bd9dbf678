// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/xml/XmlTree.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "ztportal/base/Free.h"

namespace zt {

namespace {

const xmlNode* asNode(const void* node) { return static_cast<const xmlNode*>(node); }
const xmlDoc* asTree(const void* tree) { return static_cast<const xmlDoc*>(tree); }

/// The limits of a document with its entities replaced: kExpansionFactor times its length or
/// kExpansionAlwaysAllowed bytes of text and nodes, whichever is more, and kDepth levels of nested
/// entities.
constexpr std::size_t kExpansionFactor = 10;
constexpr std::size_t kExpansionAlwaysAllowed = 1'000'000;
constexpr int kDepth = 40;

std::size_t expansionLimit(std::size_t length) {
  return std::max(kExpansionAlwaysAllowed, kExpansionFactor * length);
}

/// The entity to which the entity reference `node` refers; null if it is external or not declared
/// in the document.
const xmlNode* referencedEntity(const xmlNode& node) {
  const auto* entity = reinterpret_cast<const xmlEntity*>(node.children);
  const bool isInternal = entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY;
  return isInternal ? reinterpret_cast<const xmlNode*>(entity) : nullptr;
}

bool isText(const xmlNode& node) {
  return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE;
}

bool isEntered(const xmlNode& node, const xmlNode& top) {
  if (node.type == XML_ELEMENT_NODE) return true;
  return &node == &top && node.type != XML_ENTITY_REF_NODE && node.type != XML_DTD_NODE;
}

/// The node after `node` in document order, in the tree whose top is `top`; null after the last
/// one. Trees may be too deep for recursion.
const xmlNode* following(const xmlNode* node, const xmlNode& top) {
  if (isEntered(*node, top) && node->children != nullptr) return node->children;
  for (; node != &top; node = node->parent) {
    if (node->next != nullptr) return node->next;
  }
  return nullptr;
}

/// The size of a part of a document with its entities replaced.
struct Extent {
  std::size_t size = 0;  ///< one for each byte of text and each node
  int depth = 0;         ///< levels of nested entities
};

/// Measures how large a tree would be with its entities replaced, without replacing them.
class Expansion {
 public:
  explicit Expansion(std::size_t limit) : _limit(limit) {}

  /// The extent of `top` and all its descendants, which are nested in `outer` entities; nullopt
  /// beyond the limits.
  std::optional<Extent> of(const xmlNode& top, int outer) {
    Extent whole;
    for (const xmlNode* node = &top; node != nullptr; node = following(node, top)) {
      if (!add(whole, ofOne(*node, outer))) return std::nullopt;
      if (node->type != XML_ELEMENT_NODE) continue;
      for (const xmlAttr* attribute = node->properties; attribute != nullptr;
           attribute = attribute->next) {
        if (!add(whole, of(*asNode(attribute), outer))) return std::nullopt;
      }
    }
    return whole;
  }

 private:
  std::optional<Extent> ofOne(const xmlNode& node, int outer) {
    if (isText(node)) return Extent{1 + static_cast<std::size_t>(xmlStrlen(node.content)), 0};
    if (node.type != XML_ENTITY_REF_NODE) return Extent{1, 0};
    const xmlNode* entity = referencedEntity(node);
    return entity == nullptr ? Extent{1, 0} : ofEntity(*entity, outer);
  }

  std::optional<Extent> ofEntity(const xmlNode& entity, int outer) {
    if (outer >= kDepth) return std::nullopt;
    const auto known = _known.find(&entity);
    if (known != _known.end()) return known->second;
    std::optional<Extent> extent = of(entity, outer + 1);
    if (!extent || ++extent->depth > kDepth) return std::nullopt;
    _known.emplace(&entity, *extent);
    return extent;
  }

  bool add(Extent& whole, const std::optional<Extent>& part) const {
    if (!part || part->size > _limit - whole.size) return false;
    whole.size += part->size;
    whole.depth = std::max(whole.depth, part->depth);
    return true;
  }

  std::size_t _limit;
  std::unordered_map<const xmlNode*, Extent> _known;
};

bool expandsWithin(std::size_t limit, const xmlDoc& tree) {
  if (tree.intSubset == nullptr || tree.intSubset->entities == nullptr) return true;
  return Expansion(limit).of(*asNode(&tree), 0).has_value();
}

/// Appends the text of `top` and all its descendants, with entity references replaced. The tree has
/// passed `expandsWithin`.
void appendContent(std::string& text, const xmlNode& top) {
  if (top.type == XML_COMMENT_NODE || top.type == XML_PI_NODE) {
    if (top.content != nullptr) text += reinterpret_cast<const char*>(top.content);
    return;
  }
  for (const xmlNode* part = &top; part != nullptr; part = following(part, top)) {
    if (isText(*part)) {
      if (part->content != nullptr) text += reinterpret_cast<const char*>(part->content);
    } else if (part->type == XML_ENTITY_REF_NODE) {
      const xmlNode* entity = referencedEntity(*part);
      if (entity != nullptr) appendContent(text, *entity);
    }
  }
}

using Context = std::unique_ptr<xmlParserCtxt, Free<xmlFreeParserCtxt>>;
using Tree = std::unique_ptr<xmlDoc, Free<xmlFreeDoc>>;
using Buffer = std::unique_ptr<xmlBuffer, Free<xmlBufferFree>>;

constexpr int kQuietAndAlone =
    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;
constexpr int kContent = kQuietAndAlone | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;
constexpr int kForm = kQuietAndAlone | XML_PARSE_HUGE;

void ignoreError(void* /*context*/, xmlErrorPtr /*error*/) {}

/// Leaves the error handling of this thread to other users of libxml2: restores the last error, and
/// keeps errors without a parser, such as a lack of memory, from their handlers and from standard
/// error.
class ErrorsOfOthers {
 public:
  ErrorsOfOthers() {
    if (xmlErrorPtr last = xmlGetLastError()) xmlCopyError(last, &_last);
    xmlSetStructuredErrorFunc(nullptr, ignoreError);
  }
  ErrorsOfOthers(const ErrorsOfOthers&) = delete;
  ErrorsOfOthers& operator=(const ErrorsOfOthers&) = delete;
  ~ErrorsOfOthers() {
    xmlSetStructuredErrorFunc(_context, _handler);
    xmlCopyError(&_last, &xmlLastError);
    xmlResetError(&_last);
  }

 private:
  const xmlStructuredErrorFunc _handler = xmlStructuredError;
  void* const _context = xmlStructuredErrorContext;
  xmlError _last{};
};

// XML_PARSE_HUGE disables libxml2's protection against entity expansion, so it is cleared at the
// document type declaration, the only place that can declare entities.
void beginDocumentType(void* context, const xmlChar* name, const xmlChar* publicId,
                       const xmlChar* systemId) {
  static_cast<xmlParserCtxt*>(context)->options &= ~XML_PARSE_HUGE;
  xmlSAX2InternalSubset(context, name, publicId, systemId);
}

/// The size that the parameter entities of a document may still grow by.
struct ParameterEntities {
  std::size_t left;
  bool refused = false;
};

/// Shared by the handlers of one parse.
struct Parse {
  const xmlParserCtxt* parser;  // of the document; libxml2 uses other parsers for entities
  ParameterEntities parameterEntities;
  std::optional<XmlFault> fault = std::nullopt;
};

std::string firstLine(const char* message) {
  const std::string_view text = message == nullptr ? std::string_view() : message;
  return std::string(text.substr(0, text.find('\n')));
}

// Used instead of the handlers that a host may have set for its own use of libxml2. Only the first
// error counts, because later ones often follow from it.
void noteError(void* context, xmlErrorPtr error) {
  auto* parse = static_cast<Parse*>(static_cast<const xmlParserCtxt*>(context)->_private);
  // Violations of Namespaces in XML are not fatal errors for libxml2. That does not ask for a check
  // of the names, which are only compared.
  const bool isOfNamespace = error->domain == XML_FROM_NAMESPACE && error->level >= XML_ERR_ERROR &&
                             error->code != XML_WAR_NS_URI;
  if ((error->level != XML_ERR_FATAL && !isOfNamespace) || parse->fault) return;
  try {
    parse->fault = XmlFault{firstLine(error->message), std::nullopt};
  } catch (const std::bad_alloc&) {
    return;  // no exception may pass the functions of libxml2
  }
  if (parse->parser->inputNr < 1) return;
  // The text itself, not an entity that the parser is reading.
  const xmlParserInput* input = parse->parser->inputTab[0];
  const xmlChar* at = input->cur;
  // The parser reports a wrong tag after reading it.
  const bool isOfTag = isOfNamespace || error->code == XML_ERR_TAG_NAME_MISMATCH;
  if (isOfTag && context == parse->parser) {
    do {
      --at;
    } while (at > input->base && *at != '<');
  }
  parse->fault->offset = input->consumed + static_cast<std::size_t>(at - input->base);
}

// libxml2 parses every reference to a parameter entity again, and does not return from some nested
// ones. Those are refused, like those that grow beyond the limit: the parser treats them as
// undeclared.
xmlEntityPtr parameterEntity(void* context, const xmlChar* name) {
  const auto* parser = static_cast<const xmlParserCtxt*>(context);
  ParameterEntities* entities = &static_cast<Parse*>(parser->_private)->parameterEntities;
  xmlEntityPtr entity = xmlSAX2GetParameterEntity(context, name);
  if (entity == nullptr) return nullptr;
  const std::size_t size = 1 + static_cast<std::size_t>(entity->length);
  if (entities->refused || parser->inputNr > 1 || size > entities->left) {
    entities->refused = true;
    return nullptr;
  }
  entities->left -= size;
  return entity;
}

ZtString qualified(const xmlChar* name, const xmlNs* space) {
  const char* local = reinterpret_cast<const char*>(name);
  if (space == nullptr || space->prefix == nullptr) return local;
  return std::string(reinterpret_cast<const char*>(space->prefix)) + ':' + local;
}

/// Lists `node` and its next siblings without a document type declaration; for `Content` with the
/// nodes of entities instead of references.
void listSiblings(std::vector<const void*>& list, const xmlNode* node, ZtXMLKeep keep) {
  for (; node != nullptr; node = node->next) {
    if (node->type == XML_DTD_NODE) continue;
    if (keep == ZtXMLKeep::Form || node->type != XML_ENTITY_REF_NODE) {
      list.push_back(node);
    } else if (const xmlNode* entity = referencedEntity(*node)) {
      listSiblings(list, entity->children, keep);
    }
  }
}

}  // namespace

void* parseXmlTree(const std::string& text, ZtXMLKeep keep, XmlFault& fault) {
  static const bool kReady = (xmlInitParser(), true);
  static_cast<void>(kReady);
  if (text.size() > std::numeric_limits<int>::max()) {
    fault = {"longer than 2 GiB", std::nullopt};
    return nullptr;
  }

  const ErrorsOfOthers errorsOfOthers;
  const Context context(xmlNewParserCtxt());
  if (!context) throw std::bad_alloc();
  const std::size_t limit = expansionLimit(text.size());
  Parse parse{context.get(), {limit}};
  context->_private = &parse;
  context->sax->serror = noteError;
  context->sax->internalSubset = beginDocumentType;
  context->sax->getParameterEntity = parameterEntity;
  Tree tree(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr,
                              nullptr, keep == ZtXMLKeep::Form ? kForm : kContent));
  if (!tree || parse.fault) {
    fault = parse.fault.value_or(XmlFault{"not well-formed", std::nullopt});
    return nullptr;
  }
  if (parse.parameterEntities.refused || !expandsWithin(limit, *tree)) {
    fault = {"its entities grow beyond measure", std::nullopt};
    return nullptr;
  }
  // Otherwise libxml2 writes characters beyond ASCII as references in attributes.
  if (tree->encoding == nullptr) tree->encoding = xmlCharStrdup("UTF-8");
  return tree.release();
}

void releaseXmlTree(void* tree) { xmlFreeDoc(static_cast<xmlDoc*>(tree)); }

std::string xmlTreeText(const void* tree) {
  const ErrorsOfOthers errorsOfOthers;
  const Buffer buffer(xmlBufferCreate());
  if (!buffer) throw std::bad_alloc();
  xmlSaveCtxt* save = xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_AS_XML | XML_SAVE_NO_XHTML);
  if (save == nullptr) throw std::bad_alloc();
  // Node by node, because for a whole document libxml2 adds line ends between the top-level nodes.
  for (xmlNode* node = asTree(tree)->children; node != nullptr; node = node->next) {
    xmlSaveTree(save, node);
  }
  if (xmlSaveClose(save) < 0) throw std::bad_alloc();
  return {reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
          static_cast<std::size_t>(xmlBufferLength(buffer.get()))};
}

const void* xmlTreeRoot(const void* tree) { return xmlDocGetRootElement(asTree(tree)); }

ZtString xmlNodeName(const void* node) {
  const xmlNode* named = asNode(node);
  if (named->type == XML_ELEMENT_NODE) return qualified(named->name, named->ns);
  if (named->type == XML_PI_NODE) return reinterpret_cast<const char*>(named->name);
  return nullptr;
}

bool xmlNodeIsElement(const void* node) { return asNode(node)->type == XML_ELEMENT_NODE; }

std::string xmlNodeText(const void* node) {
  std::string text;
  appendContent(text, *asNode(node));
  return text;
}

std::vector<const void*> xmlNodeChildren(const void* node, ZtXMLKeep keep) {
  const xmlNode* parent = asNode(node);
  if (parent->type != XML_ELEMENT_NODE && parent->type != XML_DOCUMENT_NODE) return {};
  std::vector<const void*> children;
  listSiblings(children, parent->children, keep);
  return children;
}

std::vector<std::pair<ZtString, ZtString>> xmlNodeAttributes(const void* node) {
  const xmlNode* element = asNode(node);
  if (element->type != XML_ELEMENT_NODE) return {};
  std::vector<std::pair<ZtString, ZtString>> attributes;
  for (const xmlAttr* attribute = element->properties; attribute != nullptr;
       attribute = attribute->next) {
    attributes.emplace_back(qualified(attribute->name, attribute->ns), xmlNodeText(attribute));
  }
  return attributes;
}

}  // namespace zt
