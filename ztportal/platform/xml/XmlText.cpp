// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/xml/XmlText.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "ztportal/base/Text.h"

namespace zt {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::size_t kNowhere = std::string_view::npos;

/// The first bytes of a file and the encoding that they mean. Longer ones come before their
/// prefixes.
struct Beginning {
  std::string_view bytes;
  std::string_view encoding;
};
constexpr Beginning kBeginnings[] = {
    {"\xFF\xFE\0\0"sv, "UTF-32LE"}, {"\0\0\xFE\xFF"sv, "UTF-32BE"}, {"\xFF\xFE"sv, "UTF-16LE"},
    {"\xFE\xFF"sv, "UTF-16BE"},     {kByteOrderMark, "UTF-8"},      {"<\0?\0"sv, "UTF-16LE"},
    {"\0<\0?"sv, "UTF-16BE"},
};

bool isEncodingName(std::string_view name) {
  if (name.empty() || !isLetter(name.front())) return false;
  for (const char c : name) {
    if (!isLetter(c) && !(c >= '0' && c <= '9') && "._-"sv.find(c) == kNowhere) return false;
  }
  return true;
}

/// The encoding's name, a view into `declaration`; empty without one. The parser reports malformed
/// names.
std::string_view declaredEncoding(std::string_view declaration) {
  constexpr std::string_view kKey = "encoding";
  const std::size_t key = declaration.find(kKey);
  if (key == kNowhere) return {};
  const std::size_t open = declaration.find_first_of("'\"", key + kKey.size());
  if (open == kNowhere) return {};
  const std::size_t close = declaration.find(declaration[open], open + 1);
  if (close == kNowhere) return {};
  const std::string_view name = declaration.substr(open + 1, close - open - 1);
  return isEncodingName(name) ? name : std::string_view();
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return text;
}

std::size_t charactersIn(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

void appendWithLineFeeds(std::string& text, std::string_view lines) {
  for (std::size_t end = lines.find('\r'); end != kNowhere; end = lines.find('\r')) {
    text.append(lines, 0, end);
    text += '\n';
    lines.remove_prefix(end + (lines.substr(end + 1).starts_with('\n') ? 2 : 1));
  }
  text += lines;
}

}  // namespace

std::string_view xmlDeclaration(std::string_view text) {
  constexpr std::string_view kOpen = "<?xml";
  constexpr std::string_view kClose = "?>";
  if (!text.starts_with(kOpen)) return {};
  if (text.size() == kOpen.size() || kBlanks.find(text[kOpen.size()]) == kNowhere) return {};
  const std::size_t close = text.find(kClose);
  return close == kNowhere ? std::string_view() : text.substr(0, close + kClose.size());
}

std::string xmlFileEncoding(std::string_view bytes) {
  for (const Beginning& beginning : kBeginnings) {
    if (bytes.starts_with(beginning.bytes)) return std::string(beginning.encoding);
  }
  const std::string_view declared = declaredEncoding(xmlDeclaration(bytes));
  return declared.empty() ? "UTF-8" : std::string(declared);
}

std::string xmlTextInUtf8(std::string_view text) {
  text = withoutByteOrderMark(text);

  std::string result;
  result.reserve(text.size());
  const std::string_view encoding = declaredEncoding(xmlDeclaration(text));
  if (!encoding.empty()) {
    const auto before = static_cast<std::size_t>(encoding.data() - text.data());
    appendWithLineFeeds(result, text.substr(0, before));
    result += "UTF-8";
    text.remove_prefix(before + encoding.size());
  }
  appendWithLineFeeds(result, text);
  return result;
}

XmlPlace xmlPlace(std::string_view text, std::size_t offset) {
  const std::string source = xmlTextInUtf8(text);
  const std::string_view before = std::string_view(source).substr(0, offset);
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 on the first line
  XmlPlace place{1 + static_cast<std::size_t>(std::ranges::count(before, '\n')),
                 1 + charactersIn(before.substr(lineStart))};

  // The name of the encoding may have different lengths in the text and in the source.
  const std::string_view name = declaredEncoding(xmlDeclaration(source));
  if (name.empty()) return place;
  const auto nameStart = static_cast<std::size_t>(name.data() - source.data());
  if (lineStart <= nameStart && nameStart + name.size() <= before.size()) {
    place.column += declaredEncoding(xmlDeclaration(withoutByteOrderMark(text))).size();
    place.column -= name.size();
  }
  return place;
}

std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding) {
  // For an empty name ICU uses the encoding of the process's locale.
  if (encoding.empty()) return std::nullopt;
  if (bytes.size() > std::numeric_limits<std::int32_t>::max()) return std::nullopt;

  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer converter(ucnv_open(encoding.c_str(), &status));
  ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                      &status);
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                converter.getAlias(), status);
  if (U_FAILURE(status) || text.isBogus()) return std::nullopt;

  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

}  // namespace zt
