#include "ztportal/pools/ZtPortalPoolInteger.h"

#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolInteger> ZtPortalPoolInteger::initWithNameAndValue(const ZtString& name,
                                                                               std::int32_t value) {
  return std::make_shared<ZtPortalPoolInteger>(Creation{}, name, value);
}

ZtPortalPoolInteger::ZtPortalPoolInteger(Creation creation, ZtString name, std::int32_t value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolInteger::~ZtPortalPoolInteger() = default;

void ZtPortalPoolInteger::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addIntegerFieldToXml(prefix, xml, fieldName(), data(), soap);
}
