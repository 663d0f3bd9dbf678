#pragma once

#include <cstddef>
#include <string>

// Trees of libxml2 whose entity references stay references. A `node` is the address of any of its
// nodes, attributes and documents among them.

namespace zt {

/// What a document parsed from `length` bytes may come to with its entities replaced, in bytes of
/// text and nodes: ten times its length or 1 MB, whichever is more.
std::size_t expansionLimit(std::size_t length);

/// Whether the document `tree` stays within `limit` when every entity reference in it is replaced
/// by what it stands for, and whether no more than 40 entities stand in each other. Expands
/// nothing to find out.
bool expandsWithin(std::size_t limit, const void* tree);

/// The entity within the document that the entity reference `node` stands for; null when it is
/// not declared or stands outside.
const void* referencedEntity(const void* node);

/// Appends the text of `node` and all below it to `text`, entity references replaced. The tree has
/// been found to expand within its limit.
void appendNodeText(std::string& text, const void* node);

}  // namespace zt
