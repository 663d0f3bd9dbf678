#pragma once

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
/// An absent key keeps the library's default; null makes a string or a date missing.
class Description {
 public:
  /// Reads all of `text`. Throws `JsonError` with the position of the first error.
  explicit Description(const std::string& text);

  /// Creates a document without a server, to render or save it.
  std::shared_ptr<ZtPortalData> makeOffline() const;
  /// Creates a document that has contacted its server. `configurationUrl` must not be empty.
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
