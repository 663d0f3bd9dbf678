// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalDef.h"

#include <array>

#include "ztportal/base/Text.h"
#include "ztportal/platform/time/DateText.h"
#include "ztportal/pools/LanguageTable.h"
#include "ztportal/pools/Markup.h"

namespace {

constinit const ZtString kEmpty = ZtString::constant<"">();

constinit const std::array<ZtString, 5> kStepTypes{
    ZtString::constant<"ENTER">(), ZtString::constant<"LEAVE">(), ZtString::constant<"EXIT">(),
    ZtString::constant<"INFO">(), ZtString::constant<"ERROR">()};

constinit const std::array<ZtString, 3> kDiagnoseTypes{
    ZtString::constant<"MANUAL">(), ZtString::constant<"AUTOMATIC">(), ZtString::constant<"RIS">()};

template <std::size_t Count>
const ZtString& nameIn(const std::array<ZtString, Count>& names, std::uint64_t value) {
  return value < Count ? names[static_cast<std::size_t>(value)] : kEmpty;
}

}  // namespace

ZtString ZtPortalDef::appendSOAPParams(bool soap, const ZtString& params) {
  if (!soap) return kEmpty;
  std::string attribute;
  zt::appendText(attribute, " ", params.printed());
  return attribute;
}

ZtString ZtPortalDef::stringFromDate(const ZtDate& date) {
  if (date.isNull()) return nullptr;
  std::string text;
  zt::appendTimestamp(text, date);
  return text;
}

void ZtPortalDef::addStringFieldToXml(const ZtString& prefix, std::string& xml,
                                      const ZtString& name, const ZtString& value, bool soap) {
  zt::appendField(xml, prefix.printed(), zt::kStringField, name.printed(), value.printed(), soap);
}

void ZtPortalDef::addIntegerFieldToXml(const ZtString& prefix, std::string& xml,
                                       const ZtString& name, std::int32_t value, bool soap) {
  zt::appendField(xml, prefix.printed(), zt::kIntegerField, name.printed(),
                  zt::NumberText(value).view(), soap);
}

void ZtPortalDef::addFloatFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                     float value, bool soap) {
  zt::appendField(xml, prefix.printed(), zt::kFloatField, name.printed(),
                  zt::NumberText(value).view(), soap);
}

void ZtPortalDef::addBOOLFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                    ZtBOOL value, bool soap) {
  zt::appendField(xml, prefix.printed(), zt::kBooleanField, name.printed(), zt::booleanText(value),
                  soap);
}

ZtString ZtPortalDef::stepTypeToString(std::uint64_t stepType) {
  return nameIn(kStepTypes, stepType);
}

ZtString ZtPortalDef::diagnoseTypeToString(std::uint64_t diagnoseType) {
  return nameIn(kDiagnoseTypes, diagnoseType);
}

ZtString ZtPortalDef::languageToString(std::uint64_t language) {
  return zt::languageName(language);
}
