// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt {
class Json;
}

/// A report that is described as one JSON object (RFC 8259), which `docs/report-description.md` of
/// the library explains:
///
///     const ZtReportDescription description(R"({
///         "customerId": "Kelvane",
///         "configurationUrl": "http://config.example.com/reporting/kelvane.xml",
///         "pools": [{"kind": "generic", "poolType": "CUSTOM", "fields": [
///           {"name": "COUNT", "type": "integer", "value": 7}]}]})");
///     auto document = description.makeOnline(description.configurationUrl());
///     bool accepted = document->reportToServer();
///
/// An absent key keeps the library's default; null makes a string or a date missing. A value, which
/// can be copied; each call makes another document.
class ZT_EXPORT ZtReportDescription {
 public:
  /// Reads all of `text` (UTF-8), and contacts no server. Throws `ZtException`
  /// "WRONG_DESCRIPTION" for the first error; its reason begins with the place, such as
  /// "/pools/0/startPoint: expected a string or null, found 7".
  explicit ZtReportDescription(std::string_view text);
  ZtReportDescription(const ZtReportDescription&);
  ZtReportDescription& operator=(const ZtReportDescription&);
  ~ZtReportDescription();

  // Both create a new document with its pools, and examine the machine if the description asks for
  // that. Both throw std::bad_alloc.
  /// A document without a server, to render, to save or for `ZtBackgroundSender`.
  std::shared_ptr<ZtPortalData> makeOffline() const;
  /// A document that has contacted its server. `configurationUrl` must not be empty.
  std::shared_ptr<ZtPortalData> makeOnline(const ZtString& configurationUrl) const;

  /// Missing if the description has none.
  const ZtString& configurationUrl() const { return _configurationUrl; }
  bool hasPools() const { return _hasPools; }

 private:
  std::shared_ptr<ZtPortalData> make(const ZtString& configurationUrl, bool cacheConfiguration,
                                     bool mayExamineMachine) const;

  std::shared_ptr<const zt::Json> _json;
  ZtString _customerId;
  ZtString _applicationId;
  ZtString _applicationVersion;
  ZtString _configurationUrl;
  bool _cacheConfiguration = false;
  bool _hasPools = false;
};
