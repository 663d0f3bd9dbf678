#include "ztportal/system/HostRules.h"

#include <memory>
#include <utility>

#include "ztportal/base/Log.h"
#include "ztportal/base/ZtAtomic.h"

namespace zt {

namespace {

/// A function of the host, empty at first. Never destroyed, since hosts also report from static
/// destructors.
template <class Function>
ZtAtomic<std::shared_ptr<const Function>>& current() {
  static auto* const function = new ZtAtomic<std::shared_ptr<const Function>>();
  return *function;
}

template <class Function>
void set(Function function) {
  current<Function>().store(
      function != nullptr ? std::make_shared<const Function>(std::move(function)) : nullptr);
}

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

void setValueFilter(ZtValueFilter filter) {
  const bool isGiven = filter != nullptr;
  set(std::move(filter));
  rules::isFiltering = isGiven;
}

bool passesValueFilter(std::string_view poolType, std::string_view name, std::string& value) {
  const auto filter = current<ZtValueFilter>().load();
  return filter == nullptr ||
         passes(value, "a value", [&] { return (*filter)(poolType, name, value); });
}

void setRequestHook(ZtRequestHook hook) { set(std::move(hook)); }

bool passesRequestHook(std::string& request) {
  const auto hook = current<ZtRequestHook>().load();
  return hook == nullptr || passes(request, "the report", [&] { return (*hook)(request); });
}

}  // namespace zt
