#include "ztportal/pools/ZtPortalPoolFloat.h"

#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolFloat> ZtPortalPoolFloat::initWithNameAndValue(const ZtString& name,
                                                                           float value) {
  return std::make_shared<ZtPortalPoolFloat>(Creation{}, name, value);
}

ZtPortalPoolFloat::ZtPortalPoolFloat(Creation creation, ZtString name, float value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolFloat::~ZtPortalPoolFloat() = default;

void ZtPortalPoolFloat::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addFloatFieldToXml(prefix, xml, fieldName(), data(), soap);
}
