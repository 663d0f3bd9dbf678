#include "ztportal/platform/plist/PlistReader.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

#include "ztportal/base/Utf8.h"
#include "ztportal/platform/Free.h"

namespace zt {

namespace {

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

}  // namespace

std::optional<PropertyListStrings> readPropertyList(std::string_view data, PropertyListForm form) {
  if (data.size() > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
  const auto size = static_cast<std::uint32_t>(data.size());
  plist_t parsed = nullptr;
  if (form == PropertyListForm::Binary) {
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

}  // namespace zt
