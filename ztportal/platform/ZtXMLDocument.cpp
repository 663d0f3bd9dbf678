#include "ztportal/platform/ZtXMLDocument.h"

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>

#include <algorithm>
#include <limits>
#include <new>

#include "ztportal/platform/Free.h"
#include "ztportal/platform/TextEncoding.h"
#include "ztportal/platform/Utf8.h"
#include "ztportal/platform/XmlEntities.h"
#include "ztportal/platform/XmlText.h"

namespace {

using Context = std::unique_ptr<xmlParserCtxt, zt::Free<xmlFreeParserCtxt>>;
using Tree = std::unique_ptr<xmlDoc, zt::Free<xmlFreeDoc>>;
using Buffer = std::unique_ptr<xmlBuffer, zt::Free<xmlBufferFree>>;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

/// Why a text is refused, and the index of the byte where that shows, if it shows at one.
struct Fault {
  std::string reason;
  std::optional<std::size_t> offset;
};

/// What the handlers of one parse share.
struct Parse {
  const xmlParserCtxt* parser;  // of the document; entities have parsers of their own
  ParameterEntities parameterEntities;
  std::optional<Fault> fault = std::nullopt;
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
  parse->fault = Fault{firstLine(error->message), std::nullopt};
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

Tree parseTree(const std::string& text, ZtXMLKeep keep, Fault& fault) {
  static const bool kReady = (xmlInitParser(), true);
  static_cast<void>(kReady);
  if (text.size() > std::numeric_limits<int>::max()) {
    fault = {"longer than 2 GiB", std::nullopt};
    return nullptr;
  }

  const LastErrorKept lastErrorKept;
  const Context context(xmlNewParserCtxt());
  if (!context) throw std::bad_alloc();
  const std::size_t limit = zt::expansionLimit(text.size());
  Parse parse{context.get(), {limit}};
  context->_private = &parse;
  context->sax->serror = noteError;
  context->sax->internalSubset = beginDocumentType;
  context->sax->getParameterEntity = parameterEntity;
  Tree tree(xmlCtxtReadMemory(context.get(), text.data(), static_cast<int>(text.size()), nullptr,
                              nullptr, keep == ZtXMLKeep::Form ? kForm : kContent));
  if (!tree) {
    fault = parse.fault.value_or(Fault{"not well-formed", std::nullopt});
    return nullptr;
  }
  if (parse.parameterEntities.refused || !zt::expandsWithin(limit, tree.get())) {
    fault = {"its entities grow beyond measure", std::nullopt};
    return nullptr;
  }
  return tree;
}

/// Tells the caller who wants to know where in `text`, as it was given, the fault is.
void tell(ZtXMLError* error, const Fault& fault, std::string_view text) {
  if (error == nullptr) return;
  *error = {0, 0, fault.reason};
  if (!fault.offset) return;
  const zt::XmlPlace place = zt::xmlPlace(text, *fault.offset);
  error->line = place.line;
  error->column = place.column;
}

std::string writtenAnew(const xmlDoc* tree) {
  const Buffer buffer(xmlBufferCreate());
  if (!buffer) throw std::bad_alloc();
  xmlSaveCtxt* save = xmlSaveToBuffer(buffer.get(), "UTF-8", XML_SAVE_AS_XML | XML_SAVE_NO_XHTML);
  if (save == nullptr) throw std::bad_alloc();
  // Node by node: for a whole document libxml2 adds line ends between the top-level nodes.
  for (xmlNode* node = tree->children; node != nullptr; node = node->next) xmlSaveTree(save, node);
  if (xmlSaveClose(save) < 0) throw std::bad_alloc();
  return {reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
          static_cast<std::size_t>(xmlBufferLength(buffer.get()))};
}

const xmlNode* asNode(const void* node) { return static_cast<const xmlNode*>(node); }
const xmlDoc* asTree(const void* tree) { return static_cast<const xmlDoc*>(tree); }

ZtString qualified(const xmlChar* name, const xmlNs* space) {
  const char* local = reinterpret_cast<const char*>(name);
  if (space == nullptr || space->prefix == nullptr) return local;
  return std::string(reinterpret_cast<const char*>(space->prefix)) + ':' + local;
}

// The siblings from `node` on; with `Content`, what entities stand for instead of the references.
void listSiblings(std::vector<const xmlNode*>& list, const xmlNode* node, ZtXMLKeep keep) {
  for (; node != nullptr; node = node->next) {
    if (keep == ZtXMLKeep::Form || node->type != XML_ENTITY_REF_NODE) {
      list.push_back(node);
    } else if (const void* entity = zt::referencedEntity(node)) {
      listSiblings(list, asNode(entity)->children, keep);
    }
  }
}

}  // namespace

ZtXMLNode::ZtXMLNode(std::shared_ptr<const ZtXMLDocument> document, const void* node)
    : _document(std::move(document)), _node(node) {}

ZtString ZtXMLNode::name() const {
  const xmlNode* node = asNode(_node);
  if (node->type == XML_ELEMENT_NODE) return qualified(node->name, node->ns);
  if (node->type == XML_PI_NODE) return reinterpret_cast<const char*>(node->name);
  return nullptr;
}

ZtString ZtXMLNode::text() const {
  std::string text;
  zt::appendNodeText(text, _node);
  return text;
}

std::vector<ZtXMLNode> ZtXMLNode::children() const {
  const xmlNode* node = asNode(_node);
  if (node->type != XML_ELEMENT_NODE && node->type != XML_DOCUMENT_NODE) return {};
  std::vector<const xmlNode*> list;
  listSiblings(list, node->children, _document->_keep);

  std::vector<ZtXMLNode> children;
  children.reserve(list.size());
  for (const xmlNode* child : list) children.push_back(ZtXMLNode(_document, child));
  return children;
}

std::vector<std::pair<ZtString, ZtString>> ZtXMLNode::attributes() const {
  const xmlNode* node = asNode(_node);
  if (node->type != XML_ELEMENT_NODE) return {};
  std::vector<std::pair<ZtString, ZtString>> attributes;
  for (const xmlAttr* attribute = node->properties; attribute != nullptr;
       attribute = attribute->next) {
    std::string value;
    zt::appendNodeText(value, attribute);
    attributes.emplace_back(qualified(attribute->name, attribute->ns), value);
  }
  return attributes;
}

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parse(std::string_view text, ZtXMLKeep keep,
                                                    ZtXMLError* error) {
  // libxml2 takes a NUL after the root element for the end of the text.
  const std::size_t good = std::min(text.find('\0'), zt::utf8Length(text));
  if (good < text.size()) {
    const char* reason = text[good] == '\0' ? "a NUL byte" : "a byte that is not UTF-8";
    tell(error, {reason, text.size()}, text.substr(0, good));
    return nullptr;
  }
  std::string source = zt::xmlTextInUtf8(text);
  // libxml2 skips one, too; but behind the first it is a character that no document begins with.
  if (source.starts_with(kByteOrderMark)) {
    tell(error, {"a second byte order mark", 0}, text);
    return nullptr;
  }
  Fault fault;
  Tree tree = parseTree(source, keep, fault);
  if (!tree) {
    tell(error, fault, text);
    return nullptr;
  }
  // Without it, characters beyond ASCII are written as references in attributes.
  if (tree->encoding == nullptr) tree->encoding = xmlCharStrdup("UTF-8");

  if (keep == ZtXMLKeep::Content) source.resize(zt::xmlDeclaration(source).size());
  return std::shared_ptr<ZtXMLDocument>(new ZtXMLDocument(tree.release(), keep, std::move(source)));
}

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parseFileContent(std::string_view bytes,
                                                               ZtXMLKeep keep, ZtXMLError* error) {
  const std::string encoding = zt::xmlFileEncoding(bytes);
  if (encoding == "UTF-8") return parse(bytes, keep, error);
  const std::optional<std::string> text = zt::utf8From(bytes, encoding);
  if (text) return parse(*text, keep, error);
  tell(error, {"not in its encoding, " + encoding, std::nullopt}, bytes);
  return nullptr;
}

ZtXMLDocument::ZtXMLDocument(void* document, ZtXMLKeep keep, std::string source)
    : _document(document), _keep(keep), _source(std::move(source)) {}

ZtXMLDocument::~ZtXMLDocument() { xmlFreeDoc(static_cast<xmlDoc*>(_document)); }

ZtXMLNode ZtXMLDocument::documentNode() const { return {shared_from_this(), _document}; }

std::optional<ZtXMLNode> ZtXMLDocument::rootElement() const {
  return ZtXMLNode(shared_from_this(), xmlDocGetRootElement(asTree(_document)));
}

std::string ZtXMLDocument::xmlText() const {
  if (_keep == ZtXMLKeep::Form) return _source;
  return _source + writtenAnew(asTree(_document));
}
