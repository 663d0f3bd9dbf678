// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolArray.h"

#include <string_view>
#include <typeinfo>

#include "ztportal/base/Text.h"
#include "ztportal/pools/ListAccess.h"
#include "ztportal/pools/Markup.h"

namespace {

constexpr std::string_view kChildIndent = "    ";

/// Whether `field` is null or a value field of the library. Any other may be a class of the host's
/// or contain one, whose `addToXml` may change the report.
bool runsNoHostCode(const ZtPortalPoolField* field) {
  if (field == nullptr) return true;
  const std::type_info* const type = &typeid(*field);
  return type == &typeid(ZtPortalPoolString) || type == &typeid(ZtPortalPoolInteger) ||
         type == &typeid(ZtPortalPoolFloat) || type == &typeid(ZtPortalPoolBOOL);
}

template <class Child>
std::shared_ptr<Child> added(ZtPortalPoolArray::Fields* list, std::shared_ptr<Child> child) {
  if (list == nullptr) return nullptr;
  list->push_back(child);
  return child;
}

}  // namespace

std::shared_ptr<ZtPortalPoolArray> ZtPortalPoolArray::initWithName(const ZtString& name) {
  return std::make_shared<ZtPortalPoolArray>(Creation{}, name);
}

ZtPortalPoolArray::ZtPortalPoolArray(Creation creation, ZtString name)
    : ZtPortalPoolField(creation, std::move(name)), _mutableFields(std::make_shared<Fields>()) {}

ZtPortalPoolArray::~ZtPortalPoolArray() = default;

void ZtPortalPoolArray::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  const std::string_view lead = prefix.printed();
  zt::appendText(xml, lead, zt::kArrayField.text(soap), lead, zt::kName.text(soap));
  zt::appendValue(xml, fieldName().printed());
  xml += zt::kArrayNameEnd;
  if (count() != 0) {
    zt::appendText(xml, lead, zt::kFields.text(soap));
    std::string childPrefix;
    zt::appendText(childPrefix, lead, kChildIndent);
    addChildrenToXml(childPrefix, xml, soap);
    zt::appendText(xml, lead, zt::kFieldsEnd);
  } else {
    zt::appendText(xml, lead, zt::kNoFields.text(soap));
  }
  zt::appendText(xml, lead, zt::kArrayEnd);
}

// The text is that of a snapshot. Copying a long list takes as long as writing a part of it, so
// only those children are copied that are written after host code may have changed the list.
void ZtPortalPoolArray::addChildrenToXml(const ZtString& prefix, std::string& xml,
                                         bool soap) const {
  if (_mutableFields == nullptr) return;
  auto child = _mutableFields->begin();
  for (; child != _mutableFields->end() && runsNoHostCode(child->get()); ++child) {
    if (*child != nullptr) (*child)->addToXml(prefix, xml, soap);
  }
  const Fields others(child, _mutableFields->end());
  for (const auto& other : others) {
    if (other != nullptr) other->addToXml(prefix, xml, soap);
  }
}

ZtPortalPoolArray::Fields ZtPortalPoolArray::fields() const {
  return _mutableFields != nullptr ? *_mutableFields : Fields();
}

std::shared_ptr<ZtPortalPoolField> ZtPortalPoolArray::field(std::int32_t index) const {
  const std::size_t position = zt::checkedPosition(index, count());
  return (*_mutableFields)[position];
}

void ZtPortalPoolArray::deleteField(std::int32_t index) {
  const std::size_t position = zt::checkedPosition(index, count());
  _mutableFields->erase(_mutableFields->begin() + static_cast<std::ptrdiff_t>(position));
}

std::shared_ptr<ZtPortalPoolArray> ZtPortalPoolArray::addArray(const ZtString& name) {
  return added(_mutableFields.get(), ZtPortalPoolArray::initWithName(name));
}

std::shared_ptr<ZtPortalPoolString> ZtPortalPoolArray::addString(const ZtString& name,
                                                                 ZtString value) {
  return added(_mutableFields.get(),
               ZtPortalPoolString::initWithNameAndValue(name, std::move(value)));
}

std::shared_ptr<ZtPortalPoolInteger> ZtPortalPoolArray::addInteger(const ZtString& name,
                                                                   std::int32_t value) {
  return added(_mutableFields.get(), ZtPortalPoolInteger::initWithNameAndValue(name, value));
}

std::shared_ptr<ZtPortalPoolFloat> ZtPortalPoolArray::addFloat(const ZtString& name, float value) {
  return added(_mutableFields.get(), ZtPortalPoolFloat::initWithNameAndValue(name, value));
}

std::shared_ptr<ZtPortalPoolBOOL> ZtPortalPoolArray::addBOOL(const ZtString& name, ZtBOOL value) {
  return added(_mutableFields.get(), ZtPortalPoolBOOL::initWithNameAndValue(name, value));
}
