// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "tests/unit/c/CTest.h"
#include "ztportal/portal/ZtReportDescription.h"

namespace zt::test {
namespace {

using ::testing::HasSubstr;

class CReportsTest : public CTest {};

TEST_F(CReportsTest, ContactsItsServerUnlessItIsOffline) {
  const Report online = makeReport();
  EXPECT_EQ(valueOf(online, "serverVersion"), "7.1");
  EXPECT_THAT(steps, ::testing::ElementsAre(kGet, kVersion));
  forget();
  const Report offline = makeReport(ZT_OFFLINE | ZT_CACHE_CONFIGURATION);
  EXPECT_EQ(valueOf(offline, "serverVersion"), "NULL");
  EXPECT_TRUE(steps.empty());

  zt_report* own = online.get();
  EXPECT_EQ(zt_report_create("", "", "", "", 4, &own), ZT_BAD_ARGUMENT);
  EXPECT_EQ(own, nullptr);
  EXPECT_STREQ(zt_last_error(), "an unknown flag");
}

TEST_F(CReportsTest, TellsItsValues) {
  const Report own = makeReport();
  EXPECT_EQ(valueOf(own, "reportId").size(), 38U);
  EXPECT_EQ(valueOf(own, "machineId").front(), '{');
  EXPECT_EQ(valueOf(own, "customerId"), "Kelvane");
  EXPECT_EQ(valueOf(own, "applicationId"), kApplicationId);
  EXPECT_EQ(valueOf(own, "applicationVersion"), "2.1");
  EXPECT_EQ(valueOf(own, "reportUrl"), "http://report.test/soap");
  EXPECT_EQ(valueOf(own, "reportTestUrl"), "http://report.test/soap-test");
  EXPECT_EQ(valueOf(own, "configurationUrl"), kConfigurationUrl);
  EXPECT_EQ(valueOf(own, "serverVersion"), "7.1");
  EXPECT_EQ(valueOf(own, "file"), inStore(valueOf(own, "reportId") + ".ztr"));
  const char* value = nullptr;
  for (const char* key : {"", "ReportId", "url"}) {
    EXPECT_EQ(zt_report_get(own.get(), key, &value), ZT_UNKNOWN_KEY);
  }
  const Report offline = makeReport(ZT_OFFLINE);
  EXPECT_EQ(valueOf(offline, "serverVersion"), "NULL");
  EXPECT_EQ(valueOf(offline, "configurationUrl"), "NULL");
}

TEST_F(CReportsTest, MissingIdentifiersAreWrittenAsNull) {
  zt_report* own = nullptr;
  ASSERT_EQ(zt_report_create(nullptr, nullptr, nullptr, nullptr, 0, &own), ZT_OK);
  const Report owner(own, &zt_report_destroy);
  EXPECT_EQ(rendered(owner), "");  // without a pool
  EXPECT_EQ(rendered(owner, true), "");
  addPool(owner, "generic");
  EXPECT_THAT(rendered(owner), HasSubstr("<CustomerID>(null)</CustomerID>"));
  EXPECT_EQ(valueOf(owner, "customerId"), "NULL");
}

TEST_F(CReportsTest, ADeliveryHasAReceipt) {
  const Report filled = makeFilledReport();
  EXPECT_EQ(deliveryOf(filled).outcome, ZT_OUTCOME_NOT_SENT);
  EXPECT_EQ(zt_report_send(filled.get()), ZT_OK);
  const zt_delivery& accepted = deliveryOf(filled);
  EXPECT_EQ(accepted.size, sizeof(zt_delivery));
  EXPECT_EQ(accepted.outcome, ZT_OUTCOME_ACCEPTED);
  EXPECT_EQ(accepted.error, ZT_ERROR_NONE);
  EXPECT_EQ(accepted.http_status, 200);
  EXPECT_STREQ(accepted.url, "http://report.test/soap");
  EXPECT_EQ(accepted.request_bytes, rendered(filled, true).size());
  EXPECT_EQ(accepted.response_bytes, std::string(kAccepted).size());
  EXPECT_STREQ(accepted.saved_to, "");
  EXPECT_STREQ(accepted.save_error, "");
  EXPECT_EQ(accepted.save_error_number, 0);

  report = {503, "busy"};
  report.retryAfter = std::chrono::seconds(30);
  EXPECT_EQ(zt_report_send(filled.get()), ZT_NOT_ACCEPTED);
  const zt_delivery& refused = deliveryOf(filled);
  EXPECT_STREQ(zt_last_error(), refused.message);
  EXPECT_EQ(refused.outcome, ZT_OUTCOME_REFUSED);
  EXPECT_EQ(refused.error, ZT_ERROR_HTTP_STATUS);
  EXPECT_EQ(refused.http_status, 503);
  EXPECT_EQ(refused.retry_after_s, 30);
  EXPECT_EQ(refused.saved_to, valueOf(filled, "file"));
}

TEST_F(CReportsTest, SavesAndWritesItself) {
  const Report filled = makeFilledReport(ZT_OFFLINE);
  EXPECT_EQ(zt_report_save(filled.get(), nullptr), ZT_OK);
  EXPECT_EQ(platform.files_.read(valueOf(filled, "file"), 100'000), rendered(filled, true));
  EXPECT_EQ(zt_report_save(filled.get(), "/report.xml"), ZT_OK);
  EXPECT_EQ(platform.files_.read("/report.xml", 100'000), rendered(filled, true));
  EXPECT_EQ(zt_report_save(filled.get(), "/none/report.xml"), ZT_SYSTEM);
  EXPECT_THAT(zt_last_error(), ::testing::StartsWith("/none/report.xml: "));

  platform.files_.write("/file", "");
  platform.supportFolder_.folder = "/file";  // no folder can be created there
  EXPECT_EQ(zt_report_save(filled.get(), nullptr), ZT_SYSTEM);
  EXPECT_THAT(zt_last_error(), ::testing::StartsWith("the report cannot be saved: "));
  EXPECT_EQ(zt_report_send(filled.get()), ZT_NOT_ACCEPTED);
  EXPECT_THAT(zt_last_error(), HasSubstr(" It is not saved: "));
}

TEST_F(CReportsTest, ResendsASavedReport) {
  const Report saved = makeFilledReport();
  EXPECT_EQ(zt_report_save(saved.get(), nullptr), ZT_OK);
  const std::string file = valueOf(saved, "file");
  const Report sender = makeReport();
  EXPECT_EQ(zt_report_resend(sender.get(), file.c_str()), ZT_OK);
  EXPECT_TRUE(platform.files_.exists(file));
  EXPECT_EQ(zt_report_resend(sender.get(), "/none"), ZT_NOT_ACCEPTED);
  EXPECT_EQ(deliveryOf(sender).outcome, ZT_OUTCOME_UNREADABLE);
  EXPECT_EQ(deliveryOf(sender).error, ZT_ERROR_FILE);
  report = {200, kRefused};
  EXPECT_EQ(zt_report_resend(sender.get(), file.c_str()), ZT_NOT_ACCEPTED);
  EXPECT_EQ(deliveryOf(sender).outcome, ZT_OUTCOME_INVALID_RESPONSE);
}

// JSON.

TEST_F(CReportsTest, IsMadeFromADescription) {
  const std::string pools =
      R"("customerId": "Kelvane", "pools": [{"kind": "execution", "startPoint": "setup",
         "timeStamp": "1970-01-01T00:00:00Z", "steps": [{"stepName": "Copy",
         "timeStamp": "1970-01-01T00:00:01Z"}], "fields": [{"name": "N", "type": "none"}]}])";
  const std::string json =
      R"({"configurationUrl": "http://config.test/reporting/kelvane.xml", )" + pools + "}";
  zt_report* made = nullptr;
  ASSERT_EQ(zt_report_from_json(json.data(), json.size(), 0, &made), ZT_OK) << zt_last_error();
  const Report online(made, &zt_report_destroy);
  EXPECT_THAT(steps, ::testing::ElementsAre(kGet, kVersion));
  forget();
  ASSERT_EQ(zt_report_from_json(json.data(), json.size(), ZT_OFFLINE, &made), ZT_OK);
  const Report offline(made, &zt_report_destroy);
  const std::string noUrl = "{" + pools + "}";
  ASSERT_EQ(zt_report_from_json(noUrl.data(), noUrl.size(), 0, &made), ZT_OK);
  const Report withoutUrl(made, &zt_report_destroy);
  EXPECT_TRUE(steps.empty());
  addPool(online, "generic");

  const Report built = makeReport(ZT_OFFLINE);
  zt_pool* const pool = addPool(built, "execution");
  EXPECT_EQ(zt_pool_set_string(pool, "startPoint", "setup"), ZT_OK);
  zt_pool* step = nullptr;
  EXPECT_EQ(zt_pool_add_record(pool, "steps", 1000, &step), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(step, "stepName", "Copy"), ZT_OK);
  zt_pool* fields = nullptr;
  EXPECT_EQ(zt_pool_fields(pool, &fields), ZT_OK);
  EXPECT_EQ(zt_pool_set_null(fields, "N"), ZT_OK);
  const auto bodyOf = [](const Report& own) {
    const std::string text = rendered(own, true);
    return text.substr(text.find("<Datas"));
  };
  EXPECT_EQ(bodyOf(offline), bodyOf(built));
  EXPECT_EQ(bodyOf(withoutUrl), bodyOf(built));
}

TEST_F(CReportsTest, AWrongDescriptionIsNamedBeforeAnyServerIsContacted) {
  const struct {
    std::string json;
    const char* error;
  } rows[] = {
      {"", "line 1, column 1: no JSON"},
      {std::string("{\0}", 3), "line 1, column 2: no JSON"},
      {"[]", "expected an object, found []"},
      {R"({"x": 1})", "/x: unknown key"},
      {R"({"pools": [{"kind": "diagnose", "steps": [{"diagnoseType": "X"}]}]})",
       "/pools/0/steps/0/diagnoseType: expected one of MANUAL, AUTOMATIC, RIS or a number"},
  };
  for (const auto& row : rows) {
    zt_report* made = nullptr;
    EXPECT_EQ(zt_report_from_json(row.json.data(), row.json.size(), 0, &made), ZT_BAD_JSON);
    EXPECT_EQ(made, nullptr);
    EXPECT_THAT(zt_last_error(), ::testing::StartsWith(row.error));
  }
  zt_report* made = nullptr;
  EXPECT_EQ(zt_report_from_json(nullptr, 0, 0, &made), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_report_from_json("{}", 2, ZT_CACHE_CONFIGURATION, &made), ZT_BAD_ARGUMENT);
  EXPECT_TRUE(steps.empty());
}

TEST_F(CReportsTest, ADescriptionIsAValueThatMakesAnyNumberOfDocuments) {
  ZtReportDescription description(R"({"pools": [{"kind": "generic", "poolType": "A"}]})");
  const ZtReportDescription copy = description;
  description = ZtReportDescription("{}");
  EXPECT_FALSE(description.hasPools());
  EXPECT_TRUE(copy.hasPools());
  EXPECT_NE(copy.makeOffline()->reportId(), copy.makeOffline()->reportId());
  EXPECT_TRUE(copy.makeOnline(kConfigurationUrl)->online());
  EXPECT_TRUE(copy.configurationUrl().isNull());
}

// Runs.

TEST_F(CReportsTest, ARunIsReportedAsAWhole) {
  zt_report* made = nullptr;
  EXPECT_EQ(zt_run_create("Nobody", nullptr, &made), ZT_UNKNOWN_KEY);
  EXPECT_STREQ(zt_last_error(), "no such customer: \"Nobody\"");
  ASSERT_EQ(zt_run_create("Kelvane", kApplicationId, &made), ZT_OK);
  const Report run(made, &zt_report_destroy);
  EXPECT_EQ(zt_run_stop(made, "early"), ZT_OK);
  zt_pool* execution = nullptr;
  EXPECT_EQ(zt_run_start(made, "early", nullptr), ZT_OK);
  EXPECT_EQ(zt_run_start(made, "setup", &execution), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(execution, "endResultCode", "0"), ZT_OK);
  zt_pool* step = nullptr;
  EXPECT_EQ(zt_pool_add_record(execution, "steps", ZT_NOW, &step), ZT_OK);
  EXPECT_EQ(zt_run_set_string(made, nullptr, "x"), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_run_set_string(made, "EDITION", "Trial"), ZT_OK);
  EXPECT_EQ(zt_run_set_string(made, "EDITION", "Home"), ZT_OK);
  EXPECT_EQ(zt_run_set_boolean(made, "ICON", true), ZT_OK);
  EXPECT_EQ(zt_run_stop(made, "finish"), ZT_OK);
  EXPECT_EQ(zt_report_send(made), ZT_OK) << zt_last_error();
  EXPECT_THAT(*platform.http_.asked.back().body,
              ::testing::AllOf(HasSubstr("COMPUTER_SYSTEM"), HasSubstr("setup"),
                               HasSubstr("finish"), HasSubstr("Home"), HasSubstr("ICON"),
                               HasSubstr(kApplicationId), ::testing::Not(HasSubstr("Trial"))));
  EXPECT_EQ(deliveryOf(run).outcome, ZT_OUTCOME_ACCEPTED);
  EXPECT_EQ(zt_report_save(made, nullptr), ZT_OK);
  EXPECT_EQ(namesInStore().size(), 1U);
  report = {200, kRefused};
  EXPECT_EQ(zt_report_send(made), ZT_NOT_ACCEPTED);
  platform.files_.write("/file", "");
  platform.supportFolder_.folder = "/file";
  EXPECT_EQ(zt_report_save(made, nullptr), ZT_SYSTEM);
}

TEST_F(CReportsTest, OnlyARunHasTheFunctionsOfRuns) {
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* execution = addPool(own, "execution");
  EXPECT_EQ(zt_run_start(own.get(), "x", &execution), ZT_WRONG_TYPE);
  EXPECT_EQ(execution, nullptr);
  EXPECT_EQ(zt_run_stop(own.get(), "x"), ZT_WRONG_TYPE);
  EXPECT_EQ(zt_run_set_string(own.get(), "x", "x"), ZT_WRONG_TYPE);
  EXPECT_EQ(zt_run_set_boolean(own.get(), "x", true), ZT_WRONG_TYPE);
}

}  // namespace
}  // namespace zt::test
