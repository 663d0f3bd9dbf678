#include "ztportal/platform/BinaryPropertyList.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zt {

namespace {

constexpr std::string_view kMagic = "bplist";
constexpr std::size_t kTrailerSize = 32;
constexpr std::size_t kMostContainers = 1000;

/// The objects of a binary property list: a table of offsets, pointed out by a trailer.
class Objects {
 public:
  explicit Objects(std::string_view data) : _data(data) {}

  /// Reads the trailer; false when the table does not fit.
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
    const std::optional<std::size_t> position = positionOf(object);
    if (!position) return false;
    const unsigned kind = byte(*position) >> 4U;
    return kind >= kArray && kind <= kDictionary;
  }

  /// The objects that the container `object` holds, a dictionary's keys among them; nothing when
  /// they do not fit.
  std::optional<std::vector<std::uint64_t>> references(std::uint64_t object) const {
    std::size_t position = *positionOf(object);
    const unsigned kind = byte(position) >> 4U;
    std::uint64_t entries = byte(position) & kLengthMask;
    ++position;
    if (entries == kLengthFollows) {
      // An integer object: the exponent of its size, then its bytes.
      const std::optional<std::uint64_t> marker = number(position, 1);
      if (!marker) return std::nullopt;
      const std::size_t size = std::size_t{1} << (*marker & kLengthMask);
      const std::optional<std::uint64_t> length = number(position + 1, size);
      if (!length) return std::nullopt;
      entries = *length;
      position += 1 + size;
    }
    if (entries > _data.size()) return std::nullopt;
    const std::uint64_t count = kind == kDictionary ? 2 * entries : entries;
    std::vector<std::uint64_t> list;
    for (std::uint64_t i = 0; i < count; ++i, position += _referenceSize) {
      const std::optional<std::uint64_t> reference = number(position, _referenceSize);
      if (!reference) return std::nullopt;
      list.push_back(*reference);
    }
    return list;
  }

 private:
  // Kinds of objects; between these two there are sets.
  static constexpr unsigned kArray = 0xA;
  static constexpr unsigned kDictionary = 0xD;
  static constexpr unsigned kLengthMask = 0xF;
  static constexpr unsigned kLengthFollows = 0xF;

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

}  // namespace

bool isBinaryPropertyList(std::string_view data) { return data.starts_with(kMagic); }

bool sharesNoContainer(std::string_view data) {
  Objects objects(data);
  if (!objects.open()) return false;
  std::vector<bool> placed(objects.count());
  std::size_t containers = 0;
  std::size_t references = 0;
  for (std::uint64_t object = 0; object < objects.count(); ++object) {
    if (!objects.isContainer(object)) continue;
    const auto held = objects.references(object);
    if (!held || ++containers > kMostContainers) return false;
    // Containers that lie over each other can hold more than there are bytes.
    references += held->size();
    if (references > data.size()) return false;
    for (const std::uint64_t reference : *held) {
      if (!objects.isContainer(reference)) continue;
      if (placed[reference]) return false;
      placed[reference] = true;
    }
  }
  return true;
}

}  // namespace zt
