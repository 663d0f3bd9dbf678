// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/plist/PropertyList.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "ztportal/base/Free.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

namespace zt {

namespace {

constexpr std::string_view kMagic = "bplist";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kMostContainers = 1000;
constexpr std::uint64_t kCopiesFactor = 10;
constexpr std::uint64_t kCopiesAlwaysAllowed = 1'000'000;

/// The objects of a binary property list, which has a table of their offsets and a trailer.
class Objects {
 public:
  explicit Objects(std::string_view data) : _data(data) {}

  /// Reads the trailer; false if the table does not fit into the data.
  bool open() {
    if (_data.size() < kMagic.size() + kTrailerSize) return false;
    const std::size_t trailer = _data.size() - kTrailerSize;
    _offsetSize = byte(trailer + 6);
    _referenceSize = byte(trailer + 7);
    const std::optional<std::uint64_t> count = number(trailer + 8, 8);
    const std::optional<std::uint64_t> table = number(trailer + 24, 8);
    if (_offsetSize == 0 || _offsetSize > 8 || _referenceSize == 0 || _referenceSize > 8) {
      return false;
    }
    if (*table > trailer || *count > (trailer - *table) / _offsetSize) return false;
    _count = *count;
    _table = *table;
    return true;
  }

  std::size_t count() const { return _count; }

  bool isContainer(std::uint64_t object) const {
    const unsigned kind = kindOf(object);
    return kind >= kArray && kind <= kDictionary;
  }

  bool isDictionary(std::uint64_t object) const { return kindOf(object) == kDictionary; }

  /// One, plus the number of bytes of a string or of data.
  std::uint64_t weight(std::uint64_t object) const {
    const unsigned kind = kindOf(object);
    if (kind != kData && kind != kAscii && kind != kUtf16) return 1;
    const std::optional<Content> content = contentOf(object);
    return content ? 1 + content->entries * (kind == kUtf16 ? 2 : 1) : 1;
  }

  /// Whether `object` is a string without NUL characters.
  bool isPlainText(std::uint64_t object) const {
    const unsigned kind = kindOf(object);
    if (kind != kAscii && kind != kUtf16) return false;
    const std::size_t size = kind == kUtf16 ? 2 : 1;
    const std::optional<Content> content = contentOf(object);
    for (std::uint64_t i = 0; content && i < content->entries; ++i) {
      const std::optional<std::uint64_t> character = number(content->position + i * size, size);
      if (!character || *character == 0) return false;
    }
    return content.has_value();
  }

  /// The objects in the container `object`, a dictionary's keys before its values; nullopt if they
  /// do not fit into the data.
  std::optional<std::vector<std::uint64_t>> references(std::uint64_t object) const {
    const std::optional<Content> content = contentOf(object);
    if (!content) return std::nullopt;
    const std::uint64_t count = isDictionary(object) ? 2 * content->entries : content->entries;
    std::size_t position = content->position;
    std::vector<std::uint64_t> list;
    for (std::uint64_t i = 0; i < count; ++i, position += _referenceSize) {
      const std::optional<std::uint64_t> reference = number(position, _referenceSize);
      if (!reference) return std::nullopt;
      list.push_back(*reference);
    }
    return list;
  }

 private:
  // Kinds of objects. The number between the last two means a set.
  static constexpr unsigned kData = 0x4;
  static constexpr unsigned kAscii = 0x5;
  static constexpr unsigned kUtf16 = 0x6;
  static constexpr unsigned kArray = 0xA;
  static constexpr unsigned kDictionary = 0xD;
  static constexpr unsigned kLengthMask = 0xF;
  static constexpr unsigned kLengthFollows = 0xF;

  /// The number of an object's entries, and where the first one is.
  struct Content {
    std::uint64_t entries;
    std::size_t position;
  };

  /// Nullopt if it does not fit into the data or there is no such object.
  std::optional<Content> contentOf(std::uint64_t object) const {
    const std::optional<std::size_t> start = positionOf(object);
    if (!start) return std::nullopt;
    Content content{byte(*start) & kLengthMask, *start + 1};
    if (content.entries == kLengthFollows) {
      // An integer object: the exponent of its size, then its bytes.
      const std::optional<std::uint64_t> marker = number(content.position, 1);
      if (!marker) return std::nullopt;
      const std::size_t size = std::size_t{1} << (*marker & kLengthMask);
      const std::optional<std::uint64_t> length = number(content.position + 1, size);
      if (!length) return std::nullopt;
      content = {*length, content.position + 1 + size};
    }
    if (content.entries > _data.size()) return std::nullopt;
    return content;
  }

  /// The kind of the object; 0, which is not a kind, if there is no such object.
  unsigned kindOf(std::uint64_t object) const {
    const std::optional<std::size_t> position = positionOf(object);
    return position ? byte(*position) >> 4U : 0;
  }

  unsigned byte(std::size_t position) const { return static_cast<unsigned char>(_data[position]); }

  std::optional<std::uint64_t> number(std::size_t position, std::size_t size) const {
    if (size > 8 || position > _data.size() || size > _data.size() - position) return std::nullopt;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8U | byte(position + i);
    return value;
  }

  std::optional<std::size_t> positionOf(std::uint64_t object) const {
    if (object >= _count) return std::nullopt;
    const std::optional<std::uint64_t> position =
        number(_table + object * _offsetSize, _offsetSize);
    return position && *position < _data.size() ? position : std::nullopt;
  }

  std::string_view _data;
  std::size_t _offsetSize = 0;
  std::size_t _referenceSize = 0;
  std::size_t _count = 0;
  std::size_t _table = 0;
};

// plist_t is a void*.
using Node = std::unique_ptr<void, Free<plist_free>>;
using Iterator = std::unique_ptr<void, Free<std::free>>;
using Text = std::unique_ptr<char, Free<std::free>>;

ZtString stringOf(plist_t value) {
  if (plist_get_node_type(value) != PLIST_STRING) return nullptr;
  std::uint64_t length = 0;
  const char* text = plist_get_string_ptr(value, &length);
  if (text == nullptr) return nullptr;
  const std::string_view view(text, length);
  return isUtf8(view) ? ZtString(view) : nullptr;
}

/// Whether the binary property list `data` is safe for a reader that copies each object for every
/// reference to it: there are at most 1000 arrays, sets and dictionaries, each is referenced once,
/// and the copies of strings and data take at most 1 MB or ten times the length of `data`,
/// whichever is more. Twenty arrays that each contain the next one twice are a million copies, and
/// long chains are read recursively. Writers share strings and numbers, but never containers.
bool copiesWithinMeasure(std::string_view data) {
  Objects objects(data);
  if (!objects.open()) return false;
  const std::uint64_t limit = std::max(kCopiesAlwaysAllowed, kCopiesFactor * data.size());
  std::vector<bool> placed(objects.count());
  std::size_t containers = 0;
  std::size_t references = 0;
  std::uint64_t weight = 0;
  for (std::uint64_t object = 0; object < objects.count(); ++object) {
    if (!objects.isContainer(object)) continue;
    const auto held = objects.references(object);
    if (!held || ++containers > kMostContainers) return false;
    // Overlapping containers can have more references than there are bytes.
    references += held->size();
    if (references > data.size()) return false;
    for (const std::uint64_t reference : *held) {
      weight += objects.weight(reference);
      if (weight > limit) return false;
      if (!objects.isContainer(reference)) continue;
      if (placed[reference]) return false;
      placed[reference] = true;
    }
  }
  return true;
}

/// Whether the keys of all dictionaries in such a list are strings without NUL characters. libplist
/// ends the process for a UTF-16 key with a NUL character, and cuts off other keys there.
bool keysArePlainTexts(std::string_view data) {
  Objects objects(data);
  if (!objects.open()) return false;
  for (std::uint64_t object = 0; object < objects.count(); ++object) {
    if (!objects.isDictionary(object)) continue;
    const auto held = objects.references(object);
    if (!held) return false;
    const auto firstValue = held->begin() + static_cast<std::ptrdiff_t>(held->size() / 2);
    if (!std::all_of(held->begin(), firstValue,
                     [&](std::uint64_t key) { return objects.isPlainText(key); })) {
      return false;
    }
  }
  return true;
}

/// Reads `data`, which has been checked.
std::optional<PropertyListStrings> readByLibplist(std::string_view data, bool isBinary) {
  if (data.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  const auto size = static_cast<std::uint32_t>(data.size());
  plist_t parsed = nullptr;
  if (isBinary) {
    plist_from_bin(data.data(), size, &parsed);
  } else {
    plist_from_xml(data.data(), size, &parsed);
  }
  const Node list(parsed);
  if (!list || plist_get_node_type(list.get()) != PLIST_DICT) return std::nullopt;

  plist_dict_iter first = nullptr;
  plist_dict_new_iter(list.get(), &first);
  const Iterator iterator(first);
  PropertyListStrings strings;
  while (true) {
    char* name = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(list.get(), iterator.get(), &name, &value);
    const Text key(name);
    if (!key || value == nullptr) return strings;
    strings.insert_or_assign(key.get(), stringOf(value));
  }
}

}  // namespace

std::optional<PropertyListStrings> parsePropertyList(std::string_view data) {
  // libplist accepts more than property lists and is not safe for all input, hence the checks.
  if (data.starts_with(kMagic)) {
    if (!copiesWithinMeasure(data) || !keysArePlainTexts(data)) return std::nullopt;
    return readByLibplist(data, true);
  }
  const auto document = ZtXMLDocument::parse(data);
  if (document == nullptr || document->rootElement()->name() != "plist") return std::nullopt;
  return readByLibplist(data, false);
}

}  // namespace zt
