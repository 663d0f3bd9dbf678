// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/c/CTest.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/c/Call.h"
#include "ztportal/portal/ZtReportStore.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {
namespace {

class CallTest : public CTest {};

/// Whether the first and the last number of an enumeration of the library are those of ztportal.h.
template <class Enumeration>
constexpr bool areNumbers(Enumeration first, std::int32_t firstNumber, Enumeration last,
                          std::int32_t lastNumber) {
  return static_cast<std::int32_t>(first) == firstNumber &&
         static_cast<std::int32_t>(last) == lastNumber;
}
static_assert(areNumbers(ZtConsent::Unset, ZT_CONSENT_UNSET, ZtConsent::Revoked,
                         ZT_CONSENT_REVOKED));
static_assert(areNumbers(ZtLogLevel::Debug, ZT_LOG_DEBUG, ZtLogLevel::Error, ZT_LOG_ERROR));
static_assert(areNumbers(ZtTlsVersion::SystemDefault, ZT_TLS_SYSTEM_DEFAULT, ZtTlsVersion::Tls13,
                         ZT_TLS_1_3));
static_assert(areNumbers(ZtDeliveryOutcome::NotSent, ZT_OUTCOME_NOT_SENT,
                         ZtDeliveryOutcome::Unreadable, ZT_OUTCOME_UNREADABLE));
static_assert(areNumbers(ZtDeliveryError::NoError, ZT_ERROR_NONE, ZtDeliveryError::Memory,
                         ZT_ERROR_MEMORY));
static_assert(areNumbers(ZtSendEnd::Done, ZT_SEND_DONE, ZtSendEnd::NoConsent, ZT_SEND_NO_CONSENT));

TEST_F(CallTest, TurnsEveryExceptionIntoAStatusAndASentence) {
  const struct {
    std::function<void()> body;
    zt_status status;
    const char* sentence;
  } rows[] = {
      {[] { c::fail(ZT_SYSTEM, "a", "b"); }, ZT_SYSTEM, "ab"},
      {[] { throw std::bad_alloc(); }, ZT_NO_MEMORY, "not enough memory"},
      {[] { throw ZtException("NAME", "reason"); }, ZT_FAILED, "reason"},
      {[] { throwForeign(); }, ZT_FAILED, "foreign"},
      {[] { throw 7; }, ZT_FAILED, "a function of the host has thrown an exception"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(c::call(row.body), row.status);
    EXPECT_STREQ(zt_last_error(), row.sentence);
  }
}

TEST_F(CallTest, ALongSentenceIsCutOffAfterAWholeCharacter) {
  c::call([] { c::fail(ZT_FAILED, std::string(2046, 'x'), "ä"); });
  EXPECT_EQ(zt_last_error(), std::string(2046, 'x'));
  c::call([] { c::fail(ZT_FAILED, std::string(2045, 'x'), "ä", "y"); });
  EXPECT_EQ(zt_last_error(), std::string(2045, 'x') + "ä");
  c::call([] { c::fail(ZT_FAILED, std::string("a\0b", 3)); });
  EXPECT_STREQ(zt_last_error(), "a");
}

TEST_F(CallTest, EachThreadHasItsLastErrorWhichASuccessKeeps) {
  zt_report_destroy(nullptr);
  EXPECT_EQ(zt_report_send(nullptr), ZT_BAD_ARGUMENT);
  std::thread([] {
    EXPECT_STREQ(zt_last_error(), "");
    EXPECT_EQ(zt_report_render(nullptr, true, nullptr, nullptr), ZT_BAD_ARGUMENT);
    EXPECT_STREQ(zt_last_error(), "report is NULL");
  }).join();
  zt_consent consent = 0;
  EXPECT_EQ(zt_host_consent(&consent), ZT_OK);
  EXPECT_STREQ(zt_last_error(), "report is NULL");
}

/// Functions that are called with a handle, or with NULL in its place and in turn for each other
/// pointer.
struct NullRow {
  const char* name;
  std::function<zt_status()> call;
};

TEST_F(CallTest, NullPointersAreBadArguments) {
  const Report filled = makeFilledReport();
  zt_report* const own = filled.get();
  zt_pool* const pool = addPool(filled, "execution");
  zt_pool* fields = nullptr;
  ASSERT_EQ(zt_pool_fields(pool, &fields), ZT_OK);
  const Store opened = openStore();
  zt_store* const store = opened.get();
  zt_report* made = own;
  const zt_pair noName{nullptr, "x"};
  const char* text = nullptr;
  std::int64_t number = 0;
  zt_send_options options{};
  options.size = sizeof(options);
  const NullRow rows[] = {
      {"set_info", [] { return zt_host_set_info(nullptr, 1); }},
      {"set_info", [&] { return zt_host_set_info(&noName, 1); }},
      {"consent", [] { return zt_host_consent(nullptr); }},
      {"replacement", [] { return zt_replacement_set_n(nullptr, "x", 1); }},
      {"response", [] { return zt_response_set(nullptr, 200, "", 0, 0); }},
      {"response", [] { return zt_response_fail(nullptr, "x"); }},
      {"create", [] { return zt_report_create("", "", "", "", 0, nullptr); }},
      {"from_json", [] { return zt_report_from_json("{}", 2, ZT_OFFLINE, nullptr); }},
      {"set_transport", [] { return zt_report_set_transport(nullptr, nullptr); }},
      {"get", [&] { return zt_report_get(nullptr, "reportId", &text); }},
      {"get", [&] { return zt_report_get(own, nullptr, &text); }},
      {"get", [&] { return zt_report_get(own, "reportId", nullptr); }},
      {"render", [&] { return zt_report_render(own, true, nullptr, nullptr); }},
      {"render", [&] { return zt_report_render(nullptr, true, &text, nullptr); }},
      {"send", [] { return zt_report_send(nullptr); }},
      {"save", [] { return zt_report_save(nullptr, nullptr); }},
      {"save", [] { return zt_report_save(nullptr, "/x"); }},
      {"resend", [] { return zt_report_resend(nullptr, "/x"); }},
      {"resend", [&] { return zt_report_resend(own, nullptr); }},
      {"last_delivery", [&] { return zt_report_last_delivery(own, nullptr); }},
      {"add_pool", [] { return zt_report_add_pool(nullptr, "generic", 0, nullptr); }},
      {"add_pool", [&] { return zt_report_add_pool(own, nullptr, 0, nullptr); }},
      {"add_inventory", [] { return zt_report_add_inventory(nullptr, 0, nullptr); }},
      {"set_string", [] { return zt_pool_set_string(nullptr, "startPoint", "x"); }},
      {"set_string", [&] { return zt_pool_set_string(pool, nullptr, "x"); }},
      {"set_string_n", [&] { return zt_pool_set_string_n(pool, "startPoint", nullptr, 1); }},
      {"set_integer", [] { return zt_pool_set_integer(nullptr, "x", 1); }},
      {"set_boolean", [] { return zt_pool_set_boolean(nullptr, "x", true); }},
      {"set_date", [] { return zt_pool_set_date(nullptr, "x", 1); }},
      {"set_null", [] { return zt_pool_set_null(nullptr, "x"); }},
      {"set_float", [] { return zt_pool_set_float(nullptr, "x", 1); }},
      {"get_string", [&] { return zt_pool_get_string(nullptr, "x", &text, nullptr); }},
      {"get_string", [&] { return zt_pool_get_string(pool, "startPoint", nullptr, nullptr); }},
      {"get_integer", [&] { return zt_pool_get_integer(nullptr, "x", &number); }},
      {"get_integer", [&] { return zt_pool_get_integer(pool, "cancelled", nullptr); }},
      {"get_integer", [&] { return zt_pool_get_integer(pool, "endTime", nullptr); }},
      {"add_record", [] { return zt_pool_add_record(nullptr, "steps", 0, nullptr); }},
      {"fields", [] { return zt_pool_fields(nullptr, nullptr); }},
      {"fields", [&] { return zt_pool_fields(pool, nullptr); }},
      {"fields", [&] { return zt_pool_set_string_n(fields, "x", nullptr, 1); }},
      {"run", [] { return zt_run_create("Kelvane", nullptr, nullptr); }},
      {"run", [&] { return zt_run_create(nullptr, nullptr, &made); }},
      {"run", [] { return zt_run_start(nullptr, "x", nullptr); }},
      {"run", [] { return zt_run_stop(nullptr, "x"); }},
      {"run", [] { return zt_run_set_boolean(nullptr, "x", true); }},
      {"store", [] { return zt_store_create(nullptr); }},
      {"store", [&] { return zt_store_list(store, ZT_REPORTS, nullptr, nullptr); }},
      {"store", [] { return zt_store_list(nullptr, ZT_REPORTS, nullptr, nullptr); }},
      {"store", [&] { return zt_store_check(store, nullptr, nullptr, nullptr); }},
      {"store", [&] { return zt_store_remove(store, nullptr); }},
      {"store", [] { return zt_store_move(nullptr, "/x", ZT_REPORTS); }},
      {"store", [] { return zt_store_remove_all(nullptr, nullptr); }},
      {"store", [&] { return zt_store_send(nullptr, &options, nullptr); }},
      {"store", [&] { return zt_store_send(store, nullptr, nullptr); }},
      {"store", [&] { return zt_store_send(store, &options, nullptr); }},  // no URL
      {"sender", [] { return zt_sender_create(nullptr, nullptr); }},
      {"sender", [&] { return zt_sender_send(nullptr, own); }},
      {"sender", [] { return zt_sender_flush(nullptr, 0, nullptr); }},
      {"sender", [] { return zt_sender_stop(nullptr, 0, nullptr); }},
      {"sender", [] { return zt_sender_descriptor(nullptr, nullptr); }},
      {"sender", [] { return zt_sender_receipts(nullptr, nullptr, nullptr); }},
  };
  const std::string before = rendered(filled);
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(rows[i].call(), ZT_BAD_ARGUMENT) << i << " " << rows[i].name;
    EXPECT_STRNE(zt_last_error(), "");
  }
  EXPECT_EQ(rendered(filled), before);
  EXPECT_EQ(made, nullptr);  // what a failed creation leaves
  zt_store_destroy(nullptr);
  zt_sender_destroy(nullptr);
}

// Structures.

TEST_F(CallTest, AStructureMayBeOlderOrNewerThanTheLibrary) {
  struct Newer {
    zt_transport_options known;
    std::int64_t added[2];
  };
  const auto statusOf = [](std::size_t size, std::int64_t added) {
    Newer options{};
    options.known.size = size;
    options.known.timeout_ms = 500;
    options.known.compress_requests = true;
    options.added[1] = added;
    return zt_host_set_transport(&options.known);
  };
  EXPECT_EQ(statusOf(sizeof(zt_transport_options), 1), ZT_OK);
  EXPECT_TRUE(ZtHost::transportOptions().compressRequests);
  EXPECT_EQ(statusOf(sizeof(Newer), 0), ZT_OK);
  EXPECT_TRUE(ZtHost::transportOptions().compressRequests);
  EXPECT_EQ(statusOf(offsetof(zt_transport_options, connect_timeout_ms), 0), ZT_OK);
  EXPECT_EQ(ZtHost::transportOptions().timeout, std::chrono::milliseconds(500));
  EXPECT_FALSE(ZtHost::transportOptions().compressRequests);

  EXPECT_EQ(statusOf(sizeof(Newer), 1), ZT_BAD_ARGUMENT);
  EXPECT_STREQ(zt_last_error(), "transport options: a newer library is needed");
  // A size within a member was accepted, and half a pointer was followed.
  for (const std::size_t size : {std::size_t{0}, std::size_t{7}, std::size_t{10}, std::size_t{4097},
                                 std::size_t{4100}, SIZE_MAX}) {
    EXPECT_EQ(statusOf(size, 0), ZT_BAD_ARGUMENT);
    EXPECT_STREQ(zt_last_error(), "transport options: size is not set");
  }
}

TEST_F(CallTest, DurationsHaveAnEnd) {
  using std::chrono::milliseconds;
  EXPECT_EQ(c::durationOf<milliseconds>(0, ""), milliseconds(0));
  EXPECT_EQ(c::durationOf<milliseconds>(7, ""), milliseconds(7));
  EXPECT_EQ(c::durationOf<milliseconds>(ZT_NO_LIMIT, ""), milliseconds(std::chrono::years(100)));
  EXPECT_EQ(c::durationOf<milliseconds>(INT64_MAX, ""), milliseconds(std::chrono::years(100)));
  EXPECT_EQ(c::durationOf<std::chrono::seconds>(INT64_MAX, ""),
            std::chrono::seconds(std::chrono::years(100)));
  for (const std::int64_t negative : {std::int64_t{-2}, INT64_MIN}) {
    EXPECT_EQ(c::call([&] { c::durationOf<milliseconds>(negative, "budget_ms"); }),
              ZT_BAD_ARGUMENT);
    EXPECT_STREQ(zt_last_error(), "budget_ms is negative");
  }
}

}  // namespace
}  // namespace zt::test
