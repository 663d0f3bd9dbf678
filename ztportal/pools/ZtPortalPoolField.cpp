#include "ztportal/pools/ZtPortalPoolField.h"

#include "ztportal/base/Text.h"
#include "ztportal/pools/Markup.h"

std::shared_ptr<ZtPortalPoolField> ZtPortalPoolField::initWithName(const ZtString& name) {
  return std::make_shared<ZtPortalPoolField>(Creation{}, name);
}

ZtPortalPoolField::ZtPortalPoolField(Creation /*creation*/, ZtString name)
    : _fieldName(std::move(name)) {}

ZtPortalPoolField::~ZtPortalPoolField() = default;

void ZtPortalPoolField::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  const std::string_view lead = prefix.printed();
  zt::appendText(xml, lead, zt::kBareField.text(soap),                                //
                 lead, zt::kBareName.text(soap), _fieldName.printed(), zt::kNameEnd,  //
                 lead, zt::kFieldEnd);
}
