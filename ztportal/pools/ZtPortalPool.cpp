// SPDX-License-Identifier: Apache-2.0
#include "ztportal/pools/ZtPortalPool.h"

#include "ztportal/pools/PoolWriter.h"

std::shared_ptr<ZtPortalPool> ZtPortalPool::initWithValues(const ZtString& poolType,
                                                           const ZtDate& timeStamp) {
  return std::make_shared<ZtPortalPool>(Creation{}, poolType, timeStamp);
}

ZtPortalPool::ZtPortalPool(Creation /*creation*/, ZtString poolType, ZtDate timeStamp)
    : _fields(ZtPortalPoolArray::initWithName("Root")),
      _poolType(std::move(poolType)),
      _timeStamp(timeStamp) {}

ZtPortalPool::~ZtPortalPool() = default;

void ZtPortalPool::addToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  zt::PoolWriter pool(prefix, xml, soap);
  pool.begin(poolType(), timeStamp());
  const auto root = fields();
  if (root != nullptr && root->count() != 0) {
    pool.beginFields();
    addFieldsToXml(pool.fieldPrefix(), xml, soap);
    pool.endFields();
  } else {
    pool.noFields();
  }
  pool.end();
}

void ZtPortalPool::addFieldsToXml(const ZtString& prefix, std::string& xml, bool soap) const {
  if (const auto root = fields()) root->addChildrenToXml(prefix, xml, soap);
}

std::shared_ptr<ZtPortalPoolField> ZtPortalPool::field(std::int32_t index) const {
  const auto root = fields();
  return root != nullptr ? root->field(index) : nullptr;
}

std::shared_ptr<ZtPortalPoolArray> ZtPortalPool::addArray(const ZtString& name) {
  const auto root = fields();
  return root != nullptr ? root->addArray(name) : nullptr;
}

std::shared_ptr<ZtPortalPoolString> ZtPortalPool::addString(const ZtString& name, ZtString value) {
  const auto root = fields();
  return root != nullptr ? root->addString(name, std::move(value)) : nullptr;
}

std::shared_ptr<ZtPortalPoolInteger> ZtPortalPool::addInteger(const ZtString& name,
                                                              std::int32_t value) {
  const auto root = fields();
  return root != nullptr ? root->addInteger(name, value) : nullptr;
}

std::shared_ptr<ZtPortalPoolFloat> ZtPortalPool::addFloat(const ZtString& name, float value) {
  const auto root = fields();
  return root != nullptr ? root->addFloat(name, value) : nullptr;
}

std::shared_ptr<ZtPortalPoolBOOL> ZtPortalPool::addBOOL(const ZtString& name, ZtBOOL value) {
  const auto root = fields();
  return root != nullptr ? root->addBOOL(name, value) : nullptr;
}
