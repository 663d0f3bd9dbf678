// SPDX-License-Identifier: Apache-2.0
#include <chrono>
#include <string>
#include <vector>

#include "tests/unit/c/CTest.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

class CStoreTest : public CTest {
 protected:
  CStoreTest() {
    options.size = sizeof(options);
    options.configuration_url = kConfigurationUrl;
  }

  /// Saves a own. Returns its path.
  static std::string save() {
    const Report own = makeFilledReport(ZT_OFFLINE);
    EXPECT_EQ(zt_report_save(own.get(), nullptr), ZT_OK);
    return valueOf(own, "file");
  }
  static Strings listed(const Store& store, zt_store_part part = ZT_REPORTS) {
    Strings paths;
    const auto add = [](void* user, const zt_saved_report* own) {
      EXPECT_EQ(own->size, sizeof(zt_saved_report));
      static_cast<Strings*>(user)->emplace_back(own->path);
      return true;
    };
    EXPECT_EQ(zt_store_list(store.get(), part, add, &paths), ZT_OK);
    return paths;
  }

  zt_send_options options{};
};

TEST_F(CStoreTest, ListsItsReportsOldestFirst) {
  const std::string first = save();
  const std::string second = save();
  platform.files_.setTime(second, std::chrono::system_clock::time_point(std::chrono::seconds(7)));
  const Store store = openStore();
  EXPECT_THAT(listed(store), ElementsAre(second, first));

  std::string seen;
  const auto look = [](void* user, const zt_saved_report* own) {
    EXPECT_EQ(own->time, 7000);
    EXPECT_GT(own->bytes, 1000U);
    *static_cast<std::string*>(user) += own->report_id;
    return false;  // ends the list
  };
  EXPECT_EQ(zt_store_list(store.get(), ZT_REPORTS, look, &seen), ZT_OK);
  EXPECT_EQ(inStore(seen + ".ztr"), second);
  for (const zt_store_part wrong : {-1, 2}) {
    EXPECT_EQ(zt_store_list(store.get(), wrong, look, &seen), ZT_BAD_ARGUMENT);
  }
}

TEST_F(CStoreTest, ChecksMovesAndRemovesReports) {
  const std::string path = save();
  const Store store = openStore();
  const char* customer = nullptr;
  const char* problem = nullptr;
  EXPECT_EQ(zt_store_check(store.get(), path.c_str(), &customer, &problem), ZT_OK);
  EXPECT_STREQ(customer, "Kelvane");
  EXPECT_STREQ(problem, "");
  platform.files_.write("/bad.ztr", "<a>");
  EXPECT_EQ(zt_store_check(store.get(), "/bad.ztr", &customer, &problem), ZT_OK);
  EXPECT_EQ(customer, nullptr);
  EXPECT_STRNE(problem, "");
  EXPECT_EQ(zt_store_check(store.get(), path.c_str(), nullptr, nullptr), ZT_OK);

  EXPECT_EQ(zt_store_move(store.get(), path.c_str(), ZT_UNSENDABLE), ZT_OK);
  EXPECT_THAT(listed(store), IsEmpty());
  const Strings aside = listed(store, ZT_UNSENDABLE);
  ASSERT_EQ(aside.size(), 1U);
  EXPECT_EQ(zt_store_move(store.get(), aside[0].c_str(), ZT_REPORTS), ZT_OK);
  EXPECT_THAT(listed(store), ElementsAre(path));
  EXPECT_EQ(zt_store_remove(store.get(), path.c_str()), ZT_OK);
  EXPECT_EQ(zt_store_remove(store.get(), path.c_str()), ZT_SYSTEM);
  EXPECT_THAT(zt_last_error(), HasSubstr(path + ": "));
  for (const zt_store_part part : {ZT_REPORTS, ZT_UNSENDABLE}) {
    EXPECT_EQ(zt_store_move(store.get(), path.c_str(), part), ZT_SYSTEM);
    EXPECT_THAT(zt_last_error(), HasSubstr(path + ": "));
  }
  EXPECT_EQ(zt_store_move(store.get(), path.c_str(), 2), ZT_BAD_ARGUMENT);

  save();
  save();
  std::size_t removed = 0;
  EXPECT_EQ(zt_store_remove_all(store.get(), &removed), ZT_OK);
  EXPECT_EQ(removed, 2U);
  EXPECT_EQ(zt_store_remove_all(store.get(), nullptr), ZT_OK);
  EXPECT_EQ(zt_store_set_limits(1, 0, INT64_MAX), ZT_OK);
  save();
  save();
  EXPECT_EQ(listed(store).size(), 1U);
  EXPECT_EQ(zt_store_set_limits(0, 0, -2), ZT_BAD_ARGUMENT);
}

TEST_F(CStoreTest, CannotBeOpenedWithoutAFolder) {
  platform.files_.write("/file", "");
  platform.supportFolder_.folder = "/file";
  zt_store* store = nullptr;
  EXPECT_EQ(zt_store_create(&store), ZT_SYSTEM);
  EXPECT_EQ(store, nullptr);
  EXPECT_THAT(zt_last_error(), HasSubstr("the folder of the store cannot be created"));
}

TEST_F(CStoreTest, SendsItsReports) {
  save();
  save();
  const Store store = openStore();
  Strings tried;
  options.user = &tried;
  options.on_receipt = [](void* user, const zt_saved_report* own, const zt_delivery* delivery) {
    static_cast<Strings*>(user)->push_back(own->report_id +
                                           (" " + std::to_string(delivery->outcome)));
  };
  const zt_send_result* result = nullptr;
  EXPECT_EQ(zt_store_send(store.get(), &options, &result), ZT_OK) << zt_last_error();
  EXPECT_EQ(result->size, sizeof(zt_send_result));
  EXPECT_EQ(result->end, ZT_SEND_DONE);
  EXPECT_EQ(result->accepted, 2U);
  EXPECT_EQ(result->left, 0U);
  EXPECT_EQ(tried.size(), 2U);
  EXPECT_TRUE(tried.at(0).ends_with(" 1"));

  save();
  report = {503, ""};
  report.retryAfter = std::chrono::seconds(30);
  EXPECT_EQ(zt_store_send(store.get(), &options, &result), ZT_NOT_ACCEPTED);
  EXPECT_STREQ(zt_last_error(), "reports are left in the store: 1");
  EXPECT_EQ(result->end, ZT_SEND_DEFERRED);
  EXPECT_EQ(result->left, 1U);
  EXPECT_GT(result->retry_after_s, 0);

  options.is_cancelled = [](void*) { return true; };
  EXPECT_EQ(zt_store_send(store.get(), &options, nullptr), ZT_NOT_ACCEPTED);
  EXPECT_EQ(result->end, ZT_SEND_CANCELLED);  // the same structure
}

TEST_F(CStoreTest, TheCallbacksMayUseTheStoreAndEndSending) {
  save();
  save();
  const Store store = openStore();
  report = {200, kRefused};
  struct Host {
    zt_store* store;
    bool isCancelled;
  } host{store.get(), false};
  options.user = &host;
  options.on_receipt = [](void* user, const zt_saved_report* saved, const zt_delivery* /*own*/) {
    Host& own = *static_cast<Host*>(user);
    const char* customer = nullptr;
    EXPECT_EQ(zt_store_check(own.store, saved->path, &customer, nullptr), ZT_OK);
    EXPECT_EQ(zt_store_remove(own.store, saved->path), ZT_OK);
    EXPECT_EQ(std::string(saved->path).substr(0, 5), "/home");
    own.isCancelled = true;
  };
  options.is_cancelled = [](void* user) { return static_cast<Host*>(user)->isCancelled; };
  EXPECT_EQ(zt_store_send(store.get(), &options, nullptr), ZT_NOT_ACCEPTED);
  EXPECT_EQ(namesInStore().size(), 1U);
}

TEST_F(CStoreTest, AWrongOptionSendsNothing) {
  save();
  const Store store = openStore();
  zt_transport_options transport{};
  transport.size = sizeof(transport);
  transport.proxy = "ftp://x";
  const struct {
    void (*spoil)(zt_send_options& options, const zt_transport_options& transport);
    const char* error;
  } rows[] = {
      {[](auto& o, auto&) { o.configuration_url = nullptr; }, "configuration_url is NULL"},
      {[](auto& o, auto& t) { o.transport = &t; }, "proxy: "},
      {[](auto& o, auto&) { o.attempts = -2; }, "attempts is negative"},
      {[](auto& o, auto&) { o.retry_delay_ms = -2; }, "retry_delay_ms is negative"},
      {[](auto& o, auto&) { o.longest_delay_ms = -2; }, "longest_delay_ms is negative"},
      {[](auto& o, auto&) { o.budget_ms = -2; }, "budget_ms is negative"},
      {[](auto& o, auto&) { o.size = 0; }, "options: size is not set"},
  };
  for (const auto& row : rows) {
    zt_send_options wrong = options;
    row.spoil(wrong, transport);
    const zt_send_result* result = nullptr;
    EXPECT_EQ(zt_store_send(store.get(), &wrong, &result), ZT_BAD_ARGUMENT);
    EXPECT_EQ(result, nullptr);
    EXPECT_THAT(zt_last_error(), ::testing::StartsWith(row.error));
    if (wrong.budget_ms == 0) {
      zt_sender* sender = nullptr;
      EXPECT_EQ(zt_sender_create(&wrong, &sender), ZT_BAD_ARGUMENT);
      EXPECT_THAT(zt_last_error(), ::testing::StartsWith(row.error));
    }
  }
  EXPECT_EQ(namesInStore().size(), 1U);
}

}  // namespace
}  // namespace zt::test
