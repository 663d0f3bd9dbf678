// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

/// Searches the direct children of an XML node, but not their descendants.
///
///     auto document = ZtXMLDocument::parse(text);
///     auto url = ZtUtils::childNamed(*document->rootElement(), "defSOAP");
///     if (url) use(url->text());
class ZT_EXPORT ZtUtils {
 public:
  ZtUtils() = delete;

  /// The first child element whose name, prefix included, is exactly `name`.
  static std::optional<ZtXMLNode> childNamed(const ZtXMLNode& node, const ZtString& name);

  /// The first child element whose name in lower case matches `pattern`: "*" matches any number
  /// of characters, "?" one character, everything else itself. The pattern is not converted to
  /// lower case, so a pattern with a capital letter matches nothing.
  static std::optional<ZtXMLNode> childNamedLike(const ZtXMLNode& node, const ZtString& pattern);

  /// The texts of all children, texts and comments included, in document order.
  static std::vector<ZtString> childrenAsStrings(const ZtXMLNode& node);

  /// The attributes of all child elements named `name`, by name; a later one replaces an earlier
  /// one.
  static std::map<std::string, ZtString> nodesContentAsDictionary(const ZtXMLNode& element,
                                                                  const ZtString& name);
};
