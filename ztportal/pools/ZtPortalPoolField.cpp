// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolField.h"

#include "ztportal/base/Text.h"
#include "ztportal/pools/Markup.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/pools/ZtPortalPoolBOOL.h"
#include "ztportal/pools/ZtPortalPoolFloat.h"
#include "ztportal/pools/ZtPortalPoolInteger.h"
#include "ztportal/pools/ZtPortalPoolString.h"

std::shared_ptr<ZtPortalPoolField> ZtPortalPoolField::initWithName(const ZtString& name) {
  return std::make_shared<ZtPortalPoolField>(Creation{}, name);
}

ZtPortalPoolField::ZtPortalPoolField(Creation /*creation*/, ZtString name)
    : _fieldName(std::move(name)) {}

ZtPortalPoolField::~ZtPortalPoolField() = default;

void ZtPortalPoolField::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  const std::string_view lead = prefix.printed();
  zt::appendText(xml, lead, zt::kBareField.text(soap), lead, zt::kBareName.text(soap));
  zt::appendValue(xml, _fieldName.printed());
  zt::appendText(xml, zt::kNameEnd, lead, zt::kFieldEnd);
}

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

std::shared_ptr<ZtPortalPoolInteger> ZtPortalPoolInteger::initWithNameAndValue(const ZtString& name,
                                                                               std::int32_t value) {
  return std::make_shared<ZtPortalPoolInteger>(Creation{}, name, value);
}

ZtPortalPoolInteger::ZtPortalPoolInteger(Creation creation, ZtString name, std::int32_t value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolInteger::~ZtPortalPoolInteger() = default;

void ZtPortalPoolInteger::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addIntegerFieldToXml(prefix, xml, fieldName(), _data, soap);
}

std::shared_ptr<ZtPortalPoolFloat> ZtPortalPoolFloat::initWithNameAndValue(const ZtString& name,
                                                                           float value) {
  return std::make_shared<ZtPortalPoolFloat>(Creation{}, name, value);
}

ZtPortalPoolFloat::ZtPortalPoolFloat(Creation creation, ZtString name, float value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolFloat::~ZtPortalPoolFloat() = default;

void ZtPortalPoolFloat::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addFloatFieldToXml(prefix, xml, fieldName(), _data, soap);
}

std::shared_ptr<ZtPortalPoolBOOL> ZtPortalPoolBOOL::initWithNameAndValue(const ZtString& name,
                                                                         ZtBOOL value) {
  return std::make_shared<ZtPortalPoolBOOL>(Creation{}, name, value);
}

ZtPortalPoolBOOL::ZtPortalPoolBOOL(Creation creation, ZtString name, ZtBOOL value)
    : ZtPortalPoolField(creation, std::move(name)), _data(value) {}

ZtPortalPoolBOOL::~ZtPortalPoolBOOL() = default;

void ZtPortalPoolBOOL::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  ZtPortalDef::addBOOLFieldToXml(prefix, xml, fieldName(), _data, soap);
}
