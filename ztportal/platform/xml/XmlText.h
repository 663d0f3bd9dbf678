// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zt {

/// U+FEFF in UTF-8, which may precede an XML document.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// The XML declaration that `text` starts with, "<?xml" to "?>"; empty without one.
std::string_view xmlDeclaration(std::string_view text);

/// The name of the encoding of a file's content, according to its byte order mark, its first bytes
/// or its XML declaration (XML 1.0, appendix F); "UTF-8" by default.
std::string xmlFileEncoding(std::string_view bytes);

/// Normalises `text`, an XML document in UTF-8, as an XML processor does: no byte order mark, line
/// feeds for all line ends (XML 1.0, 2.11), and if its declaration names an encoding, "UTF-8".
std::string xmlTextInUtf8(std::string_view text);

/// A position in a text. Both are counted from 1, the column in characters.
struct XmlPlace {
  std::size_t line;
  std::size_t column;
};

/// The position in `text` of the byte with the index `offset` in `xmlTextInUtf8(text)`.
XmlPlace xmlPlace(std::string_view text, std::size_t offset);

/// `bytes`, text in the character set `encoding` (a name or alias registered with IANA), as UTF-8.
/// Nullopt for an unknown character set or a byte that is invalid in it.
///
///     utf8From("gr\xFC\xDF", "ISO-8859-1")     // "grüß"
std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding);

}  // namespace zt
