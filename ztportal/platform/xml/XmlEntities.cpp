#include "ztportal/platform/xml/XmlEntities.h"

#include <libxml/tree.h>

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace zt {

namespace {

constexpr std::size_t kFactor = 10;
constexpr std::size_t kAlwaysAllowed = 1'000'000;
constexpr int kDepth = 40;

const xmlNode& asNode(const void* node) { return *static_cast<const xmlNode*>(node); }

bool isText(const xmlNode& node) {
  return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE;
}

bool isEntered(const xmlNode& node, const xmlNode& top) {
  if (node.type == XML_ELEMENT_NODE) return true;
  return &node == &top && node.type != XML_ENTITY_REF_NODE && node.type != XML_DTD_NODE;
}

// The node after `node` in document order, in the tree whose top is `top`; null after the last
// one. A loop over it, unlike a recursion, takes trees of any depth.
const xmlNode* following(const xmlNode* node, const xmlNode& top) {
  if (isEntered(*node, top) && node->children != nullptr) return node->children;
  for (; node != &top; node = node->parent) {
    if (node->next != nullptr) return node->next;
  }
  return nullptr;
}

/// What a part of a document comes to with its entities replaced.
struct Extent {
  std::size_t size = 0;  ///< one for each byte of text and each node
  int depth = 0;         ///< of entities that stand in each other
};

class Expansion {
 public:
  explicit Expansion(std::size_t limit) : _limit(limit) {}

  /// The extent of `top` and all below it, which stands in `outer` entities; nothing beyond the
  /// limits.
  std::optional<Extent> of(const xmlNode& top, int outer) {
    Extent whole;
    for (const xmlNode* node = &top; node != nullptr; node = following(node, top)) {
      if (!add(whole, ofOne(*node, outer))) return std::nullopt;
      if (node->type != XML_ELEMENT_NODE) continue;
      for (const xmlAttr* attribute = node->properties; attribute != nullptr;
           attribute = attribute->next) {
        if (!add(whole, of(asNode(attribute), outer))) return std::nullopt;
      }
    }
    return whole;
  }

 private:
  std::optional<Extent> ofOne(const xmlNode& node, int outer) {
    if (isText(node)) return Extent{1 + static_cast<std::size_t>(xmlStrlen(node.content)), 0};
    if (node.type != XML_ENTITY_REF_NODE) return Extent{1, 0};
    const void* entity = referencedEntity(&node);
    return entity == nullptr ? Extent{1, 0} : ofEntity(entity, outer);
  }

  std::optional<Extent> ofEntity(const void* entity, int outer) {
    if (outer >= kDepth) return std::nullopt;
    const auto known = _known.find(entity);
    if (known != _known.end()) return known->second;
    std::optional<Extent> extent = of(asNode(entity), outer + 1);
    if (!extent || ++extent->depth > kDepth) return std::nullopt;
    _known.emplace(entity, *extent);
    return extent;
  }

  bool add(Extent& whole, const std::optional<Extent>& part) const {
    if (!part || part->size > _limit - whole.size) return false;
    whole.size += part->size;
    whole.depth = std::max(whole.depth, part->depth);
    return true;
  }

  std::size_t _limit;
  std::unordered_map<const void*, Extent> _known;
};

}  // namespace

std::size_t expansionLimit(std::size_t length) {
  return std::max(kAlwaysAllowed, kFactor * length);
}

bool expandsWithin(std::size_t limit, const void* tree) {
  const auto* document = static_cast<const xmlDoc*>(tree);
  if (document->intSubset == nullptr || document->intSubset->entities == nullptr) return true;
  return Expansion(limit).of(asNode(document), 0).has_value();
}

const void* referencedEntity(const void* node) {
  const auto* entity = reinterpret_cast<const xmlEntity*>(asNode(node).children);
  return entity != nullptr && entity->etype == XML_INTERNAL_GENERAL_ENTITY ? entity : nullptr;
}

void appendNodeText(std::string& text, const void* node) {
  const xmlNode& top = asNode(node);
  if (top.type == XML_COMMENT_NODE || top.type == XML_PI_NODE) {
    if (top.content != nullptr) text += reinterpret_cast<const char*>(top.content);
    return;
  }
  for (const xmlNode* part = &top; part != nullptr; part = following(part, top)) {
    if (isText(*part)) {
      if (part->content != nullptr) text += reinterpret_cast<const char*>(part->content);
    } else if (part->type == XML_ENTITY_REF_NODE) {
      const void* entity = referencedEntity(part);
      if (entity != nullptr) appendNodeText(text, entity);
    }
  }
}

}  // namespace zt
