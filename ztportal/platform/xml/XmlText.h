#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt {

/// The XML declaration that `text` starts with, "<?xml" to "?>"; empty without one.
std::string_view xmlDeclaration(std::string_view text);

/// Name of the encoding of a file's content by its byte order mark, its first bytes or its XML
/// declaration (XML 1.0, appendix F); "UTF-8" when none of them tells.
std::string xmlFileEncoding(std::string_view bytes);

/// `text`, an XML document in UTF-8, as an XML processor sees it: without byte order mark, with
/// line feeds for all line ends (XML 1.0, 2.11), and "UTF-8" for the encoding that its declaration
/// names, if it names one.
std::string xmlTextInUtf8(std::string_view text);

/// A place in a text; both from 1, the column in characters.
struct XmlPlace {
  std::size_t line;
  std::size_t column;
};

/// Where in `text` the byte stands that has the index `offset` in `xmlTextInUtf8(text)`.
XmlPlace xmlPlace(std::string_view text, std::size_t offset);

}  // namespace zt
