// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/api/QueryParameters.h"

#include <algorithm>
#include <limits>

#include "tools/ztinbox/Fault.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/time/Rfc3339.h"

namespace zt::inbox {

namespace {

[[noreturn]] void fail(std::string name, const std::string& rule) {
  throw InputFault(name.append(" must be ").append(rule));
}

}  // namespace

QueryParameters::QueryParameters(const HttpRequest& request,
                                 std::span<const std::string_view> known)
    : _parameters(request.parameters) {
  for (const auto& [name, value] : _parameters) {
    if (std::ranges::find(known, name) == known.end()) {
      throw InputFault("unknown parameter: " + name);
    }
    if (_parameters.count(name) > 1) throw InputFault(name + " can be given only once");
  }
}

std::optional<std::string> QueryParameters::text(const char* name) const {
  const auto parameter = _parameters.find(name);
  if (parameter == _parameters.end()) return std::nullopt;
  return parameter->second;
}

std::optional<std::uint64_t> QueryParameters::whole(const char* name, std::uint64_t least,
                                                    std::uint64_t most) const {
  const auto given = text(name);
  if (!given) return std::nullopt;
  const auto number = parseNumber<std::uint64_t>(*given);
  if (number && *number >= least && *number <= most) return number;
  std::string rule = "a whole number from ";
  rule.append(std::to_string(least));
  if (most != std::numeric_limits<std::uint64_t>::max()) {
    rule.append(" to ").append(std::to_string(most));
  }
  fail(name, rule);
}

std::optional<double> QueryParameters::seconds(const char* name, double most) const {
  const auto given = text(name);
  if (!given) return std::nullopt;
  const auto number = parseNumber<double>(*given);
  // Written so that a NaN does not pass.
  if (number && *number >= 0 && *number <= most) return number;
  fail(name, "a number of seconds from 0 to " + std::to_string(static_cast<int>(most)));
}

std::optional<bool> QueryParameters::flag(const char* name) const {
  const auto given = text(name);
  if (!given) return std::nullopt;
  if (*given == "true") return true;
  if (*given == "false") return false;
  fail(name, "true or false");
}

std::optional<Timestamp> QueryParameters::timestamp(const char* name) const {
  constexpr std::size_t kDateSize = 10;
  const auto given = text(name);
  if (!given) return std::nullopt;
  const bool isDate = given->size() == kDateSize;
  const auto parsed = parseRfc3339(isDate ? *given + "T00:00:00Z" : *given);
  if (parsed && !given->starts_with("0000")) return Timestamp(parsed->time);
  fail(name, "a date (2026-11-21) or a time with its offset (2026-11-21T12:00:00Z)");
}

}  // namespace zt::inbox
