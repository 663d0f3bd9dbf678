// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <mutex>
#include <set>

#include "ztportal/c/Call.h"
#include "ztportal/system/ZtHost.h"

namespace {

using zt::c::call;
using zt::c::fail;
using zt::c::required;
using zt::c::requiredText;

template <class Mirrored, class Enumerator>
constexpr bool hasNumber(Enumerator enumerator, Mirrored number) {
  return static_cast<Mirrored>(enumerator) == number;
}
static_assert(hasNumber(ZtConsent::Unset, ZT_CONSENT_UNSET) &&
              hasNumber(ZtConsent::Given, ZT_CONSENT_GIVEN) &&
              hasNumber(ZtConsent::Revoked, ZT_CONSENT_REVOKED));
static_assert(hasNumber(ZtLogLevel::Debug, ZT_LOG_DEBUG) &&
              hasNumber(ZtLogLevel::Info, ZT_LOG_INFO) &&
              hasNumber(ZtLogLevel::Warning, ZT_LOG_WARNING) &&
              hasNumber(ZtLogLevel::Error, ZT_LOG_ERROR));

/// `text` for the rest of the process. The values of a host are few, so each is kept once.
const char* kept(const ZtString& text) {
  if (text.isNull()) return nullptr;
  static auto& mutex = *new std::mutex;
  static auto& texts = *new std::set<std::string>;
  const std::lock_guard lock(mutex);
  return texts.emplace(text.view()).first->c_str();
}

}  // namespace

struct zt_replacement {
  std::string text;
};

namespace {

/// What the host's function `decide` returns.
template <class Decide>
ZtDecision decisionOf(Decide decide) {
  zt_replacement replacement;
  switch (decide(&replacement)) {
    case ZT_KEEP:
      return ZtDecision::keep();
    case ZT_REPLACE:
      return ZtDecision::replace(std::move(replacement.text));
    default:  // an unknown decision must not give anything away
      return ZtDecision::drop();
  }
}

}  // namespace

zt_status zt_host_set_info(const zt_pair* pairs, size_t count) {
  return call([&] {
    if (count != 0) required(pairs, "pairs");
    std::map<std::string, ZtString> info;
    for (std::size_t i = 0; i < count; ++i) {
      info.insert_or_assign(std::string(requiredText(pairs[i].name, "name")), pairs[i].value);
    }
    ZtHost::setBundleInfo(std::move(info));
  });
}

zt_status zt_host_info(const char* key, const char** value) {
  return call([&] {
    required(value, "value") = kept(ZtHost::bundleInfo(std::string(requiredText(key, "key"))));
  });
}

zt_status zt_host_close_connections() {
  return call([] { ZtHost::closeConnections(); });
}

zt_status zt_host_set_value_escaping(bool is_on) {
  return call([&] { ZtHost::setValueEscaping(is_on); });
}

zt_status zt_host_set_broadcast_enabled(bool is_enabled) {
  return call([&] { ZtHost::setBroadcastEnabled(is_enabled); });
}

zt_status zt_host_set_consent(zt_consent consent) {
  return call([&] {
    if (consent < ZT_CONSENT_UNSET || consent > ZT_CONSENT_REVOKED) {
      fail(ZT_BAD_ARGUMENT, "no such consent");
    }
    if (!ZtHost::setConsent(static_cast<ZtConsent>(consent))) {
      fail(ZT_SYSTEM, "the consent cannot be kept");
    }
  });
}

zt_status zt_host_consent(zt_consent* consent) {
  return call([&] { required(consent, "consent") = static_cast<zt_consent>(ZtHost::consent()); });
}

zt_status zt_host_set_log_handler(zt_log_handler handler, void* user) {
  return call([&] {
    if (handler == nullptr) return ZtHost::setLogHandler(nullptr);
    ZtHost::setLogHandler(
        [handler, user](ZtLogLevel level, std::string_view module, std::string_view message) {
          handler(user, static_cast<zt_log_level>(level), std::string(module).c_str(),
                  std::string(message).c_str());
        });
  });
}

zt_status zt_host_set_value_filter(zt_value_filter filter, void* user) {
  return call([&] {
    if (filter == nullptr) return ZtHost::setValueFilter(nullptr);
    ZtHost::setValueFilter(
        [filter, user](std::string_view poolType, std::string_view name, std::string_view value) {
          return decisionOf([&](zt_replacement* replacement) {
            return filter(user, std::string(poolType).c_str(), std::string(name).c_str(),
                          std::string(value).c_str(), value.size(), replacement);
          });
        });
  });
}

zt_status zt_host_set_request_hook(zt_request_hook hook, void* user) {
  return call([&] {
    if (hook == nullptr) return ZtHost::setRequestHook(nullptr);
    ZtHost::setRequestHook([hook, user](std::string_view request) {
      return decisionOf([&](zt_replacement* replacement) {
        return hook(user, std::string(request).c_str(), request.size(), replacement);
      });
    });
  });
}

zt_status zt_replacement_set_n(zt_replacement* replacement, const char* text, size_t length) {
  return call([&] {
    if (length != 0) required(text, "text");
    required(replacement, "replacement").text.assign(text == nullptr ? "" : text, length);
  });
}
