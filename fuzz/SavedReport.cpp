// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FuzzTarget.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"

// A file of the store when it is sent again: parsed and written back.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view content = zt::fuzz::textOf(data, size);
  ZtXMLError error;
  const auto saved = ZtXMLDocument::parseFileContent(content, ZtXMLKeep::Form, &error);
  zt::fuzz::require((saved == nullptr) == !error.reason.isNull());
  if (saved == nullptr) return 0;
  const std::string sent = saved->xmlText();
  zt::fuzz::require(zt::isUtf8(sent));
  const auto arrived = ZtXMLDocument::parse(sent, ZtXMLKeep::Form);
  zt::fuzz::require(arrived != nullptr && arrived->xmlText() == sent);
  zt::fuzz::require(arrived->rootElement()->text() == saved->rootElement()->text());
  return 0;
}
