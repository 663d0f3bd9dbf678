// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FuzzTarget.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/xml/ZtXMLDocument.h"
#include "ztportal/pools/ZtPortalPool.h"
#include "ztportal/system/ZtHost.h"

// Any bytes as the type, a name and a value of a pool that is written with escaping.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZtHost::setValueEscaping(true);
  const ZtString hostile = zt::fuzz::textOf(data, size);
  const auto pool = ZtPortalPool::initWithValues(hostile, ZtDate());
  pool->addString(hostile, hostile);
  std::string xml;
  pool->addToXml("", xml, false);
  zt::fuzz::require(zt::isUtf8(xml));
  const auto parsed = ZtXMLDocument::parse(xml, ZtXMLKeep::Form);
  zt::fuzz::require(parsed != nullptr);
  zt::fuzz::require(parsed->rootElement()->attributes().size() == 1);
  const std::string text(parsed->rootElement()->text().view());
  const bool isReadBack = text.find(hostile.view()) != std::string::npos;
  const bool isRepaired = text.find("\xEF\xBF\xBD") != std::string::npos;
  zt::fuzz::require(isReadBack || isRepaired);
  return 0;
}
