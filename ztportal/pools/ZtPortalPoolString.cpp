#include "ztportal/pools/ZtPortalPoolString.h"

#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolString> ZtPortalPoolString::initWithNameAndValue(const ZtString& name,
                                                                             ZtString value) {
  return std::make_shared<ZtPortalPoolString>(Creation{}, name, std::move(value));
}

ZtPortalPoolString::ZtPortalPoolString(Creation creation, ZtString name, ZtString value)
    : ZtPortalPoolField(creation, std::move(name)), _data(std::move(value)) {}

ZtPortalPoolString::~ZtPortalPoolString() = default;

void ZtPortalPoolString::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addStringFieldToXml(prefix, xml, fieldName(), _data.unguarded(), soap);
}
