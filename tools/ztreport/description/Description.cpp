#include "tools/ztreport/description/Description.h"

namespace zt::tools {

Description::Description(const std::string& text) : _json(parseJson(text)) {
  JsonValue(_json, "").eachMember([this](const std::string& key, const JsonValue& value) {
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
  make(nullptr, false,
       MachineCheck::Skipped);  // finds errors in the pools before a server is contacted
}

std::shared_ptr<ZtPortalData> Description::make(const ZtString& configurationUrl,
                                                bool cacheConfiguration, MachineCheck check) const {
  auto document = ZtPortalData::initWithValues(configurationUrl, cacheConfiguration, _customerId,
                                               _applicationId, _applicationVersion);
  if (const Json* const pools = _json.find("pools")) {
    for (const JsonValue& pool : JsonValue(*pools, "/pools").list()) {
      addPool(pool, *document, check);
    }
  }
  return document;
}

std::shared_ptr<ZtPortalData> Description::makeOffline() const {
  return make(nullptr, false, MachineCheck::Allowed);
}

std::shared_ptr<ZtPortalData> Description::makeOnline(const ZtString& configurationUrl) const {
  return make(configurationUrl, _cacheConfiguration, MachineCheck::Allowed);
}

}  // namespace zt::tools
