#include "ztportal/platform/ZtXMLDocument.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <rapidxml/rapidxml.hpp>
#include <stdexcept>

#include "ztportal/platform/TextEncoding.h"
#include "ztportal/platform/Utf8.h"
#include "ztportal/platform/XmlText.h"

// A stand-in by RapidXml. It takes some names and characters that XML forbids, looks into no
// document type declaration, and does not write content anew.

namespace {

using Node = rapidxml::xml_node<char>;

/// A parsed text; the document points into it.
struct Tree {
  std::string text;
  rapidxml::xml_document<char> document;
};

constexpr int kParse = rapidxml::parse_validate_closing_tags | rapidxml::parse_comment_nodes |
                       rapidxml::parse_pi_nodes;

const Node& asNode(const void* node) { return *static_cast<const Node*>(node); }
const Node& topOf(const Tree& tree) { return tree.document; }

std::vector<const Node*> childrenOf(const Node& node) {
  std::vector<const Node*> children;
  for (const Node* child = node.first_node(); child != nullptr; child = child->next_sibling()) {
    children.push_back(child);
  }
  return children;
}

std::vector<const Node*> rootsOf(const Tree& tree) {
  std::vector<const Node*> roots = childrenOf(topOf(tree));
  std::erase_if(roots, [](const Node* node) { return node->type() != rapidxml::node_element; });
  return roots;
}

/// Whether `name` stands for a character: "#228", "amp". RapidXml lets all others pass as text.
bool isKnownReference(std::string_view name) {
  constexpr std::array<std::string_view, 5> kEntities{"amp", "apos", "gt", "lt", "quot"};
  return name.starts_with('#') || std::ranges::count(kEntities, name) != 0;
}

bool knowsAllReferences(std::string_view text) {
  constexpr std::pair<std::string_view, std::string_view> kWithoutReferences[] = {
      {"<![CDATA[", "]]>"}, {"<!--", "-->"}, {"<?", "?>"}};
  while (!text.empty()) {
    if (text.front() == '&' && !isKnownReference(text.substr(1, text.find(';') - 1))) return false;
    for (const auto& [open, close] : kWithoutReferences) {
      if (text.starts_with(open)) text.remove_prefix(std::min(text.find(close), text.size() - 1));
    }
    text.remove_prefix(1);
  }
  return true;
}

std::unique_ptr<Tree> parseTree(const std::string& text) try {
  if (!knowsAllReferences(text)) return nullptr;
  auto tree = std::make_unique<Tree>();
  tree->text = text;
  tree->document.parse<kParse>(tree->text.data());
  return rootsOf(*tree).size() == 1 ? std::move(tree) : nullptr;
} catch (const rapidxml::parse_error&) {
  return nullptr;
}

std::string valueOf(const Node& node) { return {node.value(), node.value_size()}; }

void appendText(std::string& text, const Node& node) {
  const rapidxml::node_type type = node.type();
  if (type == rapidxml::node_data || type == rapidxml::node_cdata) text += valueOf(node);
  for (const Node* child : childrenOf(node)) appendText(text, *child);
}

}  // namespace

ZtXMLNode::ZtXMLNode(std::shared_ptr<const ZtXMLDocument> document, const void* node)
    : _document(std::move(document)), _node(node) {}

ZtString ZtXMLNode::name() const {
  const Node& node = asNode(_node);
  const bool isNamed = node.type() == rapidxml::node_element || node.type() == rapidxml::node_pi;
  return isNamed ? ZtString(std::string_view(node.name(), node.name_size())) : nullptr;
}

ZtString ZtXMLNode::text() const {
  const Node& node = asNode(_node);
  const rapidxml::node_type type = node.type();
  if (type == rapidxml::node_comment || type == rapidxml::node_pi) return valueOf(node);
  std::string text;
  appendText(text, node);
  return text;
}

std::vector<ZtXMLNode> ZtXMLNode::children() const {
  std::vector<ZtXMLNode> children;
  for (const Node* child : childrenOf(asNode(_node))) {
    children.push_back(ZtXMLNode(_document, child));
  }
  return children;
}

std::vector<std::pair<ZtString, ZtString>> ZtXMLNode::attributes() const {
  std::vector<std::pair<ZtString, ZtString>> attributes;
  for (const auto* next = asNode(_node).first_attribute(); next != nullptr;
       next = next->next_attribute()) {
    const std::string_view name(next->name(), next->name_size());
    if (name == "xmlns" || name.starts_with("xmlns:")) continue;
    attributes.emplace_back(name, std::string_view(next->value(), next->value_size()));
  }
  return attributes;
}

// Says of a refused text that it is none, not where: the rooms do not ask.

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parse(std::string_view text, ZtXMLKeep keep,
                                                    ZtXMLError* error) {
  std::string source;
  std::unique_ptr<Tree> tree;
  if (text.find('\0') == std::string_view::npos && zt::isUtf8(text)) {
    source = zt::xmlTextInUtf8(text);
    tree = parseTree(source);
  }
  if (tree == nullptr) {
    if (error != nullptr) *error = {0, 0, "not well-formed"};
    return nullptr;
  }
  return std::shared_ptr<ZtXMLDocument>(new ZtXMLDocument(tree.release(), keep, std::move(source)));
}

std::shared_ptr<ZtXMLDocument> ZtXMLDocument::parseFileContent(std::string_view bytes,
                                                               ZtXMLKeep keep, ZtXMLError* error) {
  const std::string encoding = zt::xmlFileEncoding(bytes);
  if (encoding == "UTF-8") return parse(bytes, keep, error);
  const std::optional<std::string> text = zt::utf8From(bytes, encoding);
  if (text) return parse(*text, keep, error);
  if (error != nullptr) *error = {0, 0, "not in its encoding"};
  return nullptr;
}

ZtXMLDocument::ZtXMLDocument(void* document, ZtXMLKeep keep, std::string source)
    : _document(document), _keep(keep), _source(std::move(source)) {}

ZtXMLDocument::~ZtXMLDocument() { delete static_cast<Tree*>(_document); }

ZtXMLNode ZtXMLDocument::documentNode() const {
  return {shared_from_this(), &topOf(*static_cast<const Tree*>(_document))};
}

std::optional<ZtXMLNode> ZtXMLDocument::rootElement() const {
  return ZtXMLNode(shared_from_this(), rootsOf(*static_cast<const Tree*>(_document)).front());
}

std::string ZtXMLDocument::xmlText() const {
  if (_keep == ZtXMLKeep::Form) return _source;
  throw std::logic_error("The stand-in does not write content anew");
}
