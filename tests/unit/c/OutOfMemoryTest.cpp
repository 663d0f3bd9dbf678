// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <string>

#include "tests/unit/base/CountedMemory.h"
#include "tests/unit/c/CTest.h"

namespace zt::test {
namespace {

/// Calls `call` with ever more memory until it succeeds; until then it reports ZT_NO_MEMORY, and
/// the own stays as it is.
void expectNoMemory(const char* name, zt_report* own, const std::function<zt_status()>& call) {
  const auto textOf = [own] {
    const char* text = nullptr;
    EXPECT_EQ(zt_report_render(own, false, &text, nullptr), ZT_OK);
    return std::string(text);
  };
  const std::string before = textOf();
  for (long allocations = 0;; ++allocations) {
    allocationsLeft = allocations;
    const zt_status status = call();
    const bool isEnough = allocationsLeft > 0;
    allocationsLeft = -1;
    if (isEnough) {
      EXPECT_EQ(status, ZT_OK) << name;
      return;
    }
    if (status == ZT_OK) continue;  // a part that is optional had no memory
    ASSERT_EQ(status, ZT_NO_MEMORY) << name << " " << allocations << " " << zt_last_error();
    EXPECT_STREQ(zt_last_error(), "not enough memory");
    EXPECT_EQ(textOf(), before) << name;
  }
}

class COutOfMemoryTest : public CTest {};

TEST_F(COutOfMemoryTest, EveryChangeIsMadeOrNot) {
  const Report owner = makeFilledReport(ZT_OFFLINE);
  zt_report* const own = owner.get();
  zt_pool* const pool = addPool(owner, "execution");
  zt_pool* const manager = addPool(owner, "connectionManager");
  zt_pool* added = nullptr;
  zt_pool* fields = nullptr;
  ASSERT_EQ(zt_pool_fields(pool, &fields), ZT_OK);
  const char* text = nullptr;
  const char* const longText = "a text that is longer than any small string";
  zt_pair pairs[] = {{"CFBundleName", "Setup"}, {"CFBundleVersion", longText}};
  const std::pair<const char*, std::function<zt_status()>> rows[] = {
      {"set_string", [&] { return zt_pool_set_string(pool, "startPoint", longText); }},
      {"get_string", [&] { return zt_pool_get_string(pool, "startPoint", &text, nullptr); }},
      {"append", [&] { return zt_pool_set_string(manager, "registeredRoamNetworks", longText); }},
      {"add_record", [&] { return zt_pool_add_record(pool, "steps", 0, &added); }},
      {"add_string", [&] { return zt_pool_set_string(fields, longText, longText); }},
      {"add_integer", [&] { return zt_pool_set_integer(fields, "I", 7); }},
      {"add_none", [&] { return zt_pool_set_null(fields, "N"); }},
      {"add_array", [&] { return zt_pool_add_record(fields, "A", 0, &added); }},
      {"add_pool", [&] { return zt_report_add_pool(own, "diagnose", 0, &added); }},
      {"get", [&] { return zt_report_get(own, "reportId", &text); }},
      {"render", [&] { return zt_report_render(own, true, &text, nullptr); }},
      {"last_delivery",
       [&] {
         const zt_delivery* delivery = nullptr;
         return zt_report_last_delivery(own, &delivery);
       }},
      {"set_info", [&] { return zt_host_set_info(pairs, 2); }},
      {"filter",
       [&] {
         return zt_host_set_value_filter(
             [](void*, const char*, const char*, const char*, std::size_t, zt_replacement*) {
               return zt_decision{ZT_KEEP};
             },
             nullptr);
       }},
      {"no filter", [&] { return zt_host_set_value_filter(nullptr, nullptr); }},
      {"transport", [&] { return zt_report_set_transport(own, nullptr); }},
  };
  for (const auto& [name, call] : rows) expectNoMemory(name, own, call);
}

TEST_F(COutOfMemoryTest, EveryHandleIsMadeOrNot) {
  const Report unchanged = makeFilledReport(ZT_OFFLINE);
  const std::string json =
      R"({"pools": [{"kind": "execution", "steps": [{}], "fields": [{"type": "none"}]}]})";
  expectNoMemory("create", unchanged.get(), [] {
    zt_report* own = nullptr;
    const zt_status status =
        zt_report_create(nullptr, "Kelvane", kApplicationId, "2.1", ZT_OFFLINE, &own);
    EXPECT_EQ(status == ZT_OK, own != nullptr);
    zt_report_destroy(own);
    return status;
  });
  expectNoMemory("from_json", unchanged.get(), [&] {
    zt_report* own = nullptr;
    const zt_status status = zt_report_from_json(json.data(), json.size(), ZT_OFFLINE, &own);
    EXPECT_EQ(status == ZT_OK, own != nullptr);
    zt_report_destroy(own);
    return status;
  });
  expectNoMemory("run", unchanged.get(), [] {
    zt_report* run = nullptr;
    const zt_status status = zt_run_create("Kelvane", nullptr, &run);
    EXPECT_EQ(status == ZT_OK, run != nullptr);
    zt_report_destroy(run);
    return status;
  });
}

TEST_F(COutOfMemoryTest, NothingIsLost) {
  long before = 0;
  for (int i = 0; i < 3; ++i) {
    const Report own = makeFilledReport(ZT_OFFLINE);
    zt_pool_add_record(addPool(own, "execution"), "steps", 0, nullptr);
    zt_pool_set_string(addPool(own, "diagnose"), "none", "x");
    rendered(own);
    forget();  // what the fakes recorded
    if (i == 0) before = allocationsHeld;
    EXPECT_EQ(allocationsHeld, before);
  }
}

}  // namespace
}  // namespace zt::test
