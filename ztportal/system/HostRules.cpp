// SPDX-License-Identifier: Apache-2.0
#include "ztportal/system/HostRules.h"

#include <utility>

#include "ztportal/base/HostSetting.h"
#include "ztportal/base/Log.h"

namespace zt {

namespace {

/// Applies what `decide` returns to `text`. A host that cannot decide must not give anything away.
template <class Decide>
bool passes(std::string& text, std::string_view what, Decide decide) try {
  ZtDecision decision = decide();
  if (decision.kind == ZtDecision::Kind::Replace) text = std::move(decision.text);
  return decision.kind != ZtDecision::Kind::Drop;
} catch (...) {
  log(ZtLogLevel::Error, "report", "a function of the host has thrown, so ", what, " is dropped");
  return false;
}

}  // namespace

bool passesValueFilter(std::string_view poolType, std::string_view name, std::string& value) {
  const auto filter = hostSetting<ZtValueFilter>().load();
  return filter == nullptr ||
         passes(value, "a value", [&] { return (*filter)(poolType, name, value); });
}

bool passesRequestHook(std::string& request) {
  const auto hook = hostSetting<ZtRequestHook>().load();
  return hook == nullptr || passes(request, "the report", [&] { return (*hook)(request); });
}

}  // namespace zt
