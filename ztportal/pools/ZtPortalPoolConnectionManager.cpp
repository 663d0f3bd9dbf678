// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPoolConnectionManager.h"

#include <type_traits>

#include "ztportal/pools/PoolWriter.h"

namespace {}

std::shared_ptr<ZtPortalPoolConnectionManager> ZtPortalPoolConnectionManager::initWithValues(
    const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPoolConnectionManager>(Creation{}, timeStamp);
}

ZtPortalPoolConnectionManager::ZtPortalPoolConnectionManager(Creation creation,
                                                             const ZtDate& timeStamp)
    : ZtPortalPool(creation, zt::Fields<ZtPortalPoolConnectionManager>::kType, timeStamp) {
  clear();
}

ZtPortalPoolConnectionManager::~ZtPortalPoolConnectionManager() = default;

void ZtPortalPoolConnectionManager::addToXml(const ZtString& prefix, std::string& xml,
                                             bool soap) const {
  zt::writePool(*this, prefix, xml, soap);
}

void ZtPortalPoolConnectionManager::clear() {
  zt::eachField<ZtPortalPoolConnectionManager>([this](const auto& field) {
    auto& value = this->*field.member;
    if constexpr (std::is_arithmetic_v<std::remove_reference_t<decltype(value)>>) {
      value = 0;
    } else if constexpr (std::is_same_v<decltype(value), ZtAtomic<ZtString>&>) {
      if (&value != &_deviceIMEI && &value != &_simIMSI) value.store(ZtString::constant<"">());
    } else {
      value.store(nullptr);
    }
  });
}
