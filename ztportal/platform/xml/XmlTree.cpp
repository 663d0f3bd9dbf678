#include "ztportal/platform/xml/XmlTree.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <limits>
#include <memory>
#include <new>
#include <string_view>

#include "ztportal/platform/Free.h"
#include "ztportal/platform/xml/XmlEntities.h"

namespace zt {

namespace {

using Context = std::unique_ptr<xmlParserCtxt, Free<xmlFreeParserCtxt>>;
using Tree = std::unique_ptr<xmlDoc, Free<xmlFreeDoc>>;
using Buffer = std::unique_ptr<xmlBuffer, Free<xmlBufferFree>>;

constexpr int kQuietAndAlone =
    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;
constexpr int kContent = kQuietAndAlone | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;
constexpr int kForm = kQuietAndAlone | XML_PARSE_HUGE;

// Keeps what libxml2 tells this thread's other users of their last error.
class LastErrorKept {
 public:
  LastErrorKept() {
    if (xmlErrorPtr last = xmlGetLastError()) xmlCopyError(last, &_error);
  }
  LastErrorKept(const LastErrorKept&) = delete;
  LastErrorKept& operator=(const LastErrorKept&) = delete;
  ~LastErrorKept() {
    xmlCopyError(&_error, &xmlLastError);
    xmlResetError(&_error);
  }

 private:
  xmlError _error{};
};

// XML_PARSE_HUGE switches the guard against growing entities off, so it ends where a document type
// declaration, the only place to declare entities, begins.
void beginDocumentType(void* context, const xmlChar* name, const xmlChar* publicId,
                       const xmlChar* systemId) {
  static_cast<xmlParserCtxt*>(context)->options &= ~XML_PARSE_HUGE;
  xmlSAX2InternalSubset(context, name, publicId, systemId);
}

/// What the parameter entities of one document may still come to.
struct ParameterEntities {
  std::size_t left;
  bool refused = false;
};

/// What the handlers of one parse share.
struct Parse {
  const xmlParserCtxt* parser;  // of the document; entities have parsers of their own
  ParameterEntities parameterEntities;
  std::optional<XmlFault> fault = std::nullopt;
};

std::string firstLine(const char* message) {
  const std::string_view text = message == nullptr ? std::string_view() : message;
  return std::string(text.substr(0, text.find('\n')));
}

// Stands before the handlers that a host may have set for its own use of libxml2. Only the first
// error counts: what follows it is often its consequence.
void noteError(void* context, xmlErrorPtr error) {
  auto* parse = static_cast<Parse*>(static_cast<const xmlParserCtxt*>(context)->_private);
  if (error->level != XML_ERR_FATAL || parse->fault) return;
  parse->fault = XmlFault{firstLine(error->message), std::nullopt};
  if (parse->parser->inputNr < 1) return;
  // The text itself, below the entities that may be read at the moment.
  const xmlParserInput* input = parse->parser->inputTab[0];
  const xmlChar* at = input->cur;
  // An end tag that ends another element has been read by now.
  if (error->code == XML_ERR_TAG_NAME_MISMATCH && context == parse->parser) {
    do {
      --at;
    } while (at > input->base && *at != '<');
  }
  parse->fault->offset = input->consumed + static_cast<std::size_t>(at - input->base);
}

// Each reference to a parameter entity is parsed anew, and libxml2 never comes back from some that
// stand in each other. Those are refused, like those that grow beyond the limit: to the parser
// they are not declared.
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

const xmlNode* asNode(const void* node) { return static_cast<const xmlNode*>(node); }
const xmlDoc* asTree(const void* tree) { return static_cast<const xmlDoc*>(tree); }

ZtString qualified(const xmlChar* name, const xmlNs* space) {
  const char* local = reinterpret_cast<const char*>(name);
  if (space == nullptr || space->prefix == nullptr) return local;
  return std::string(reinterpret_cast<const char*>(space->prefix)) + ':' + local;
}

// The siblings from `node` on; with `Content`, what entities stand for instead of the references.
void listSiblings(std::vector<const void*>& list, const xmlNode* node, ZtXMLKeep keep) {
  for (; node != nullptr; node = node->next) {
    if (keep == ZtXMLKeep::Form || node->type != XML_ENTITY_REF_NODE) {
      list.push_back(node);
    } else if (const void* entity = referencedEntity(node)) {
      listSiblings(list, asNode(entity)->children, keep);
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

  const LastErrorKept lastErrorKept;
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
  if (!tree) {
    fault = parse.fault.value_or(XmlFault{"not well-formed", std::nullopt});
    return nullptr;
  }
  if (parse.parameterEntities.refused || !expandsWithin(limit, tree.get())) {
    fault = {"its entities grow beyond measure", std::nullopt};
    return nullptr;
  }
  // Without it, characters beyond ASCII are written as references in attributes.
  if (tree->encoding == nullptr) tree->encoding = xmlCharStrdup("UTF-8");
  return tree.release();
}

void releaseXmlTree(void* tree) { xmlFreeDoc(static_cast<xmlDoc*>(tree)); }

std::string xmlTreeText(const void* tree) {
  const Buffer buffer(xmlBufferCreate());
  if (!buffer) throw std::bad_alloc();
  xmlSaveCtxt* save = xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_AS_XML | XML_SAVE_NO_XHTML);
  if (save == nullptr) throw std::bad_alloc();
  // Node by node: for a whole document libxml2 adds line ends between the top-level nodes.
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

std::string xmlNodeText(const void* node) {
  std::string text;
  appendNodeText(text, node);
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
