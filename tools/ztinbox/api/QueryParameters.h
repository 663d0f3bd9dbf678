// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/store/StoredReport.h"

namespace zt::inbox {

/// The parameters of a request's query. Every function throws InputFault for an invalid parameter;
/// the message names the parameter and the rule.
class QueryParameters {
 public:
  /// A name that is not in `known`, or that occurs twice, is an error: a misspelt filter must not
  /// select all reports.
  QueryParameters(const HttpRequest& request, std::span<const std::string_view> known);
  QueryParameters(const HttpRequest& request, std::initializer_list<std::string_view> known)
      : QueryParameters(request, std::span(known.begin(), known.size())) {}

  // These return nullopt for a missing parameter.

  std::optional<std::string> text(const char* name) const;
  std::optional<std::uint64_t> whole(const char* name, std::uint64_t least,
                                     std::uint64_t most) const;
  std::optional<double> seconds(const char* name, double most) const;
  std::optional<bool> flag(const char* name) const;
  /// A date, which means its beginning in UTC, or an RFC 3339 timestamp.
  std::optional<Timestamp> timestamp(const char* name) const;

 private:
  const std::multimap<std::string, std::string>& _parameters;
};

}  // namespace zt::inbox
