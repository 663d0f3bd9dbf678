#include "ztportal/pools/ZtPortalPoolBOOL.h"

#include "ztportal/pools/ZtPortalDef.h"

std::shared_ptr<ZtPortalPoolBOOL> ZtPortalPoolBOOL::initWithNameAndValue(const ZtString& name,
                                                                         ZtBOOL value) {
  return std::make_shared<ZtPortalPoolBOOL>(Creation{}, name, value);
}

ZtPortalPoolBOOL::ZtPortalPoolBOOL(Creation creation, ZtString name, ZtBOOL value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolBOOL::~ZtPortalPoolBOOL() = default;

void ZtPortalPoolBOOL::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addBOOLFieldToXml(prefix, xml, fieldName(), data(), soap);
}
