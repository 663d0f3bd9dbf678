// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <utility>

#include "ztportal/base/ZtAtomic.h"

namespace zt {

/// What the host has set for its process; null before that. There is one for each type. Never
/// destroyed, since hosts also report from static destructors.
template <class Value>
ZtAtomic<std::shared_ptr<const Value>>& hostSetting() {
  static auto* const setting = new ZtAtomic<std::shared_ptr<const Value>>();
  return *setting;
}

/// Sets a function of the host, a `std::function`; null for an empty one. Returns whether there is
/// one now.
template <class Function>
bool setHostFunction(Function function) {
  const bool isGiven = function != nullptr;
  hostSetting<Function>().store(isGiven ? std::make_shared<const Function>(std::move(function))
                                        : nullptr);
  return isGiven;
}

}  // namespace zt
