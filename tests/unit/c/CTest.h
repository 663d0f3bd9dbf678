// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/c/ztportal.h"

namespace zt::test {

/// A host in C on the fake machine of `PortalTest`. What it sets for the process ends with the
/// test.
class CTest : public PortalTest {
 protected:
  CTest() {
    // The real transport knows that no server has an empty URL.
    platform.http_.answer = [answer = platform.http_.answer](const auto& asked) {
      return asked.url.empty() ? HttpResponse{} : answer(asked);
    };
  }
  ~CTest() override {
    zt_host_set_consent(ZT_CONSENT_UNSET);
    zt_host_set_broadcast_enabled(true);
    zt_host_set_value_escaping(false);
    zt_host_set_value_filter(nullptr, nullptr);
    zt_host_set_request_hook(nullptr, nullptr);
    zt_host_set_log_handler(nullptr, nullptr);
    zt_host_set_transport(nullptr);
    zt_store_set_limits(0, 0, 0);
  }

  using Report = std::unique_ptr<zt_report, decltype(&zt_report_destroy)>;
  using Store = std::unique_ptr<zt_store, decltype(&zt_store_destroy)>;

  static Report makeReport(std::uint32_t flags = 0) {
    zt_report* own = nullptr;
    EXPECT_EQ(zt_report_create(kConfigurationUrl, "Kelvane", kApplicationId, "2.1", flags, &own),
              ZT_OK);
    return {own, &zt_report_destroy};
  }
  /// With a pool.
  static Report makeFilledReport(std::uint32_t flags = 0) {
    Report own = makeReport(flags);
    EXPECT_EQ(zt_report_add_pool(own.get(), "execution", 0, nullptr), ZT_OK);
    return own;
  }
  static zt_pool* addPool(const Report& own, const char* kind) {
    zt_pool* pool = nullptr;
    EXPECT_EQ(zt_report_add_pool(own.get(), kind, 0, &pool), ZT_OK);
    return pool;
  }
  static std::string rendered(const Report& own, bool soap = false) {
    const char* text = nullptr;
    std::size_t length = 0;
    EXPECT_EQ(zt_report_render(own.get(), soap, &text, &length), ZT_OK);
    return {text, length};
  }
  static std::string valueOf(const Report& own, const char* key) {
    const char* value = nullptr;
    EXPECT_EQ(zt_report_get(own.get(), key, &value), ZT_OK) << key;
    return value != nullptr ? value : "NULL";
  }
  static const zt_delivery& deliveryOf(const Report& own) {
    const zt_delivery* delivery = nullptr;
    EXPECT_EQ(zt_report_last_delivery(own.get(), &delivery), ZT_OK);
    return *delivery;
  }
  static Store openStore() {
    zt_store* store = nullptr;
    EXPECT_EQ(zt_store_create(&store), ZT_OK) << zt_last_error();
    return {store, &zt_store_destroy};
  }
};

}  // namespace zt::test
