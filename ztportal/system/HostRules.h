// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "ztportal/system/ZtHost.h"

/// What the host wants done with the reports of its process, see `ZtHost`. Everything is off at
/// first, and then costs one atomic read.
namespace zt {

namespace rules {
inline constinit std::atomic<bool> isEscaping = false;
inline constinit std::atomic<bool> isFiltering = false;
inline constinit std::atomic<bool> isBroadcasting = true;
}  // namespace rules

/// Whether the user has revoked the consent: nothing may be examined, sent, saved or broadcast.
/// Costs one stat() without a consent.
inline bool consentIsRevoked() { return ZtHost::consent() == ZtConsent::Revoked; }

inline bool valuesAreEscaped() noexcept {
  return rules::isEscaping.load(std::memory_order_relaxed);
}
/// Whether values are written as they are.
inline bool valuesArePlain() noexcept {
  return !rules::isFiltering.load(std::memory_order_relaxed) && !valuesAreEscaped();
}
/// Asks the filter about `value` and replaces it if the filter does. False: to be left out, also if
/// the filter throws anything.
bool passesValueFilter(std::string_view poolType, std::string_view name, std::string& value);

/// Asks the hook about `request` and replaces it if the hook does. False: neither to be broadcast
/// nor sent nor saved, also if the hook throws anything.
bool passesRequestHook(std::string& request);

}  // namespace zt
