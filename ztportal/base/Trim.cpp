#include "ztportal/base/Trim.h"

#include <array>
#include <cstddef>

namespace zt {

namespace {

constexpr std::array<std::string_view, 25> kWhiteSpace{
    "\t",           "\n",           "\v",           "\f",           "\r",           " ",
    "\xC2\x85",     "\xC2\xA0",     "\xE1\x9A\x80", "\xE2\x80\x80", "\xE2\x80\x81", "\xE2\x80\x82",
    "\xE2\x80\x83", "\xE2\x80\x84", "\xE2\x80\x85", "\xE2\x80\x86", "\xE2\x80\x87", "\xE2\x80\x88",
    "\xE2\x80\x89", "\xE2\x80\x8A", "\xE2\x80\xA8", "\xE2\x80\xA9", "\xE2\x80\xAF", "\xE2\x81\x9F",
    "\xE3\x80\x80"};

std::size_t blankSizeAtStart(std::string_view text) {
  for (const std::string_view blank : kWhiteSpace) {
    if (text.starts_with(blank)) return blank.size();
  }
  return 0;
}

std::size_t blankSizeAtEnd(std::string_view text) {
  for (const std::string_view blank : kWhiteSpace) {
    if (text.ends_with(blank)) return blank.size();
  }
  return 0;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  while (const std::size_t size = blankSizeAtStart(text)) text.remove_prefix(size);
  while (const std::size_t size = blankSizeAtEnd(text)) text.remove_suffix(size);
  return text;
}

}  // namespace zt
