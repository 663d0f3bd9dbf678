#pragma once

#include <optional>
#include <string>

#include "tools/ztreport/description/JsonValue.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// Whether a description may let the library examine the machine, which starts a subprocess.
enum class MachineCheck { Allowed, Skipped };

/// Adds the pool that `object` describes to a document (PoolDescription.cpp). Throws `JsonError` at
/// the first error.
void addPool(const JsonValue& object, ZtPortalData& document, MachineCheck check);

/// A report described as one JSON object:
///
///     {"customerId": "Kelvane", "configurationUrl": "http://127.0.0.1:8025/reporting/kelvane.xml",
///      "pools": [{"kind": "generic", "poolType": "CUSTOM", "fields": [
///        {"name": "COUNT", "type": "integer", "value": 7}]}]}
///
/// An absent key leaves what the library sets; null makes a text or a date missing.
class Description {
 public:
  /// Reads `text` whole. Raises `JsonError` with the place of the first fault.
  explicit Description(const std::string& text);

  /// A document that knows no server: for its text, and for the store.
  std::shared_ptr<ZtPortalData> makeOffline() const;
  /// A document that has asked its server already. `configurationUrl` must be there.
  std::shared_ptr<ZtPortalData> makeOnline(const ZtString& configurationUrl) const;

  const ZtString& configurationUrl() const { return _configurationUrl; }
  bool hasPools() const { return _hasPools; }

 private:
  std::shared_ptr<ZtPortalData> make(const ZtString& configurationUrl, bool cacheConfiguration,
                                     MachineCheck check) const;

  Json _json;
  ZtString _customerId;
  ZtString _applicationId;
  ZtString _applicationVersion;
  ZtString _configurationUrl;
  bool _cacheConfiguration = false;
  bool _hasPools = false;
};

}  // namespace zt::tools
