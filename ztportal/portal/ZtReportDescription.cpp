// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ZtReportDescription.h"

#include <new>

#include "ztportal/base/ZtException.h"
#include "ztportal/portal/description/PoolDescription.h"

ZtReportDescription::ZtReportDescription(std::string_view text) try
    : _json(std::make_shared<const zt::Json>(zt::parseJson(text))) {
  zt::JsonValue(*_json, "").eachMember([this](const std::string& key, const zt::JsonValue& value) {
    if (key == "customerId") {
      _customerId = value.string();
    } else if (key == "applicationId") {
      _applicationId = value.string();
    } else if (key == "applicationVersion") {
      _applicationVersion = value.string();
    } else if (key == "configurationUrl") {
      _configurationUrl = value.text();
    } else if (key == "cacheConfiguration") {
      _cacheConfiguration = value.boolean();
    } else if (key == "pools") {
      _hasPools = !value.list().empty();
    } else {
      return false;
    }
    return true;
  });
  make(nullptr, false, false);  // finds errors in the pools before a server is contacted
} catch (const zt::JsonError& error) {
  throw ZtException("WRONG_DESCRIPTION", error.what());
}

ZtReportDescription::ZtReportDescription(const ZtReportDescription&) = default;
ZtReportDescription& ZtReportDescription::operator=(const ZtReportDescription&) = default;
ZtReportDescription::~ZtReportDescription() = default;

std::shared_ptr<ZtPortalData> ZtReportDescription::make(const ZtString& configurationUrl,
                                                        bool cacheConfiguration,
                                                        bool mayExamineMachine) const {
  auto document = ZtPortalData::initWithValues(configurationUrl, cacheConfiguration, _customerId,
                                               _applicationId, _applicationVersion);
  if (document == nullptr) throw std::bad_alloc();
  if (const zt::Json* const pools = _json->find("pools")) {
    for (const zt::JsonValue& pool : zt::JsonValue(*pools, "/pools").list()) {
      zt::addPool(pool, *document, mayExamineMachine);
    }
  }
  return document;
}

std::shared_ptr<ZtPortalData> ZtReportDescription::makeOffline() const {
  return make(nullptr, false, true);
}

std::shared_ptr<ZtPortalData> ZtReportDescription::makeOnline(
    const ZtString& configurationUrl) const {
  return make(configurationUrl, _cacheConfiguration, true);
}
