// SPDX-License-Identifier: Apache-2.0
#include <poll.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TestPaths.h"
#include "tests/integration/library/RealPortalTest.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Subprocess.h"
#include "ztportal/c/ztportal.h"

// The C interface on the real platform, with real servers.

namespace zt::test {
namespace {

using Lines = std::vector<std::string>;

class CInterfaceTest : public RealPortalTest {
 protected:
  ~CInterfaceTest() override { zt_host_set_transport(nullptr); }

  static zt_report* makeReport(const char* url, std::uint32_t flags = 0) {
    zt_report* report = nullptr;
    zt_pool* pool = nullptr;
    zt_pool* fields = nullptr;
    EXPECT_EQ(zt_report_create(url, "Kelvane", kApplicationId, "2.1", flags, &report), ZT_OK);
    EXPECT_EQ(zt_report_add_pool(report, "generic", ZT_NOW, &pool), ZT_OK);
    EXPECT_EQ(zt_pool_set_string(pool, "poolType", "CUSTOM"), ZT_OK);
    EXPECT_EQ(zt_pool_fields(pool, &fields), ZT_OK);
    EXPECT_EQ(zt_pool_set_string(fields, "RESULT", "gr\xc3\xbc\xc3\x9f"), ZT_OK);
    return report;
  }
};

TEST_F(CInterfaceTest, AnInboxGetsTheReport) {
  const Inbox inbox;
  zt_report* const report = makeReport(inbox.configurationUrl().c_str());
  EXPECT_EQ(zt_report_send(report), ZT_OK) << zt_last_error();
  const char* text = nullptr;
  std::size_t length = 0;
  EXPECT_EQ(zt_report_render(report, true, &text, &length), ZT_OK);
  EXPECT_EQ(inbox.raw(1), std::string(text, length));

  inbox.behave(R"({"answer": "error:503"})");
  EXPECT_EQ(zt_report_send(report), ZT_NOT_ACCEPTED);
  const zt_delivery* delivery = nullptr;
  EXPECT_EQ(zt_report_last_delivery(report, &delivery), ZT_OK);
  EXPECT_EQ(delivery->outcome, ZT_OUTCOME_REFUSED);
  EXPECT_EQ(delivery->http_status, 503);
  EXPECT_EQ(content(delivery->saved_to), std::string(text, length));
  inbox.behave(R"({"answer": "accept"})");

  zt_store* store = nullptr;
  ASSERT_EQ(zt_store_create(&store), ZT_OK);
  zt_send_options options{};
  options.size = sizeof(options);
  const std::string url = inbox.configurationUrl();
  options.configuration_url = url.c_str();
  const zt_send_result* result = nullptr;
  EXPECT_EQ(zt_store_send(store, &options, &result), ZT_OK) << zt_last_error();
  EXPECT_EQ(result->accepted, 1U);
  zt_store_destroy(store);
  zt_report_destroy(report);
}

TEST_F(CInterfaceTest, ManyThreadsSendTheirReports) {
  const ReportingServer server;
  const std::string url = server.configurationUrl();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&url, i] {
      for (int k = 0; k < 5; ++k) {
        zt_report* const report = makeReport(url.c_str());
        EXPECT_EQ(zt_report_send(report), ZT_OK) << zt_last_error();
        const std::string key = "key " + std::to_string(i);
        EXPECT_EQ(zt_report_get(report, key.c_str(), nullptr), ZT_BAD_ARGUMENT);
        const char* value = nullptr;
        EXPECT_EQ(zt_report_get(report, key.c_str(), &value), ZT_UNKNOWN_KEY);
        EXPECT_EQ(zt_last_error(), "a report has no \"" + key + "\"");
        zt_report_destroy(report);
      }
      zt_host_close_connections();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(stored().empty());
}

// The host's own transport.

/// Accepts the version request, and asks to wait with the report.
void answer(void* user, const zt_request* request, zt_response* response) {
  EXPECT_EQ(request->size, sizeof(zt_request));
  std::string line = std::string(request->method) + " " + request->url;
  for (std::size_t i = 0; i < request->header_count; ++i) {
    if (std::string(request->headers[i].name) == "X-Host") line += " with header";
  }
  static_cast<Lines*>(user)->push_back(line);
  const std::string body(request->body, request->body_length);
  EXPECT_EQ(zt_response_set(response, 200, nullptr, 1, 0), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_response_fail(response, nullptr), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_response_set(response, 200, "", 0, -2), ZT_BAD_ARGUMENT);
  std::string text = "<configuration><defSOAP>http://own.test/</defSOAP></configuration>";
  if (!body.empty()) text = "<versioninfo>7.1</versioninfo>";
  if (body.find("postPoolDatas") == std::string::npos) {
    EXPECT_EQ(zt_response_set(response, 200, text.data(), text.size(), 0), ZT_OK);
  } else if (static_cast<Lines*>(user)->size() == 3) {
    EXPECT_EQ(zt_response_set(response, 503, "busy", 4, 30), ZT_OK);
  } else {
    EXPECT_EQ(zt_response_fail(response, "the modem is off"), ZT_OK);
  }
}

TEST_F(CInterfaceTest, AHostMaySendItself) {
  Lines requests;
  const zt_pair header{"X-Host", "1"};
  zt_transport_options options{};
  options.size = sizeof(options);
  options.headers = &header;
  options.header_count = 1;
  options.transport = answer;
  options.transport_user = &requests;
  EXPECT_EQ(zt_host_set_transport(&options), ZT_OK);
  zt_report* const report = makeReport("http://config.test/a.xml");
  EXPECT_EQ(zt_report_send(report), ZT_NOT_ACCEPTED);
  const zt_delivery* delivery = nullptr;
  EXPECT_EQ(zt_report_last_delivery(report, &delivery), ZT_OK);
  EXPECT_EQ(delivery->http_status, 503);
  EXPECT_EQ(delivery->retry_after_s, 30);
  EXPECT_EQ(zt_report_send(report), ZT_NOT_ACCEPTED);
  EXPECT_EQ(zt_report_last_delivery(report, &delivery), ZT_OK);
  EXPECT_EQ(delivery->error, ZT_ERROR_HOST);
  EXPECT_STREQ(zt_last_error(), delivery->message);
  EXPECT_THAT(zt_last_error(), testing::HasSubstr("the modem is off"));
  EXPECT_THAT(requests, testing::ElementsAre("GET http://config.test/a.xml with header",
                                             "POST http://own.test/ with header",
                                             "POST http://own.test/ with header",
                                             "POST http://own.test/ with header"));
  zt_report_destroy(report);
}

// Sending in the background.

TEST_F(CInterfaceTest, ASenderKeepsItsReceiptsForTheHost) {
  const ReportingServer server;
  const std::string url = server.configurationUrl();
  zt_send_options options{};
  options.size = sizeof(options);
  options.configuration_url = url.c_str();
  zt_sender* sender = nullptr;
  ASSERT_EQ(zt_sender_create(&options, &sender), ZT_OK);
  zt_report* const report = makeReport(nullptr, ZT_OFFLINE);
  EXPECT_EQ(zt_sender_send(sender, nullptr), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_sender_receipts(sender, nullptr, nullptr), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_sender_flush(sender, -2, nullptr), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_sender_stop(sender, -2, nullptr), ZT_BAD_ARGUMENT);
  EXPECT_EQ(zt_sender_descriptor(sender, nullptr), ZT_BAD_ARGUMENT);
  int descriptor = -1;
  EXPECT_EQ(zt_sender_descriptor(sender, &descriptor), ZT_OK);
  EXPECT_EQ(zt_sender_send(sender, report), ZT_OK);
  const char* id = nullptr;
  EXPECT_EQ(zt_report_get(report, "reportId", &id), ZT_OK);
  pollfd watched{descriptor, POLLIN, 0};
  EXPECT_EQ(::poll(&watched, 1, 60'000), 1);
  Lines receipts;
  const auto add = [](void* user, const zt_saved_report* saved, const zt_delivery* delivery) {
    static_cast<Lines*>(user)->push_back(saved->report_id +
                                         (" " + std::to_string(delivery->outcome)));
  };
  EXPECT_EQ(zt_sender_receipts(sender, add, &receipts), ZT_OK);
  EXPECT_THAT(receipts, testing::ElementsAre(id + (" " + std::to_string(ZT_OUTCOME_ACCEPTED))));
  std::size_t left = 7;
  EXPECT_EQ(zt_sender_flush(sender, 60'000, &left), ZT_OK);
  EXPECT_EQ(left, 0U);
  EXPECT_EQ(zt_sender_stop(sender, 60'000, nullptr), ZT_OK);
  EXPECT_EQ(zt_sender_send(sender, report), ZT_OK);
  EXPECT_EQ(zt_sender_stop(sender, 60'000, &left), ZT_OK);
  EXPECT_EQ(left, 1U);
  zt_sender_destroy(sender);
  zt_report_destroy(report);
}

TEST_F(CInterfaceTest, ASenderCallsTheHostOnItsThread) {
  const ReportingServer server;
  const std::string url = server.configurationUrl();
  struct Seen {
    std::thread::id thread;
    zt_outcome outcome = ZT_OUTCOME_NOT_SENT;
  } seen;
  zt_send_options options{};
  options.size = sizeof(options);
  options.configuration_url = url.c_str();
  options.attempts = ZT_NO_LIMIT;
  options.retry_delay_ms = options.longest_delay_ms = ZT_NO_LIMIT;
  options.user = &seen;
  options.on_receipt = [](void* user, const zt_saved_report*, const zt_delivery* delivery) {
    *static_cast<Seen*>(user) = {std::this_thread::get_id(), delivery->outcome};
  };
  zt_sender* sender = nullptr;
  ASSERT_EQ(zt_sender_create(&options, &sender), ZT_OK);
  int descriptor = 0;
  EXPECT_EQ(zt_sender_descriptor(sender, &descriptor), ZT_OK);
  EXPECT_EQ(descriptor, -1);
  zt_report* const report = makeReport(nullptr, ZT_OFFLINE);
  EXPECT_EQ(zt_sender_send(sender, report), ZT_OK);
  EXPECT_EQ(zt_sender_flush(sender, ZT_NO_LIMIT, nullptr), ZT_OK);
  EXPECT_EQ(seen.outcome, ZT_OUTCOME_ACCEPTED);
  EXPECT_NE(seen.thread, std::this_thread::get_id());
  zt_sender_destroy(sender);
  zt_report_destroy(report);
}

TEST_F(CInterfaceTest, ADescriptionIsRenderedAsByTheProgram) {
  const std::string json = R"({"customerId": "Kelvane", "applicationVersion": "2.1",
    "pools": [{"kind": "execution", "timeStamp": "2026-11-21T12:00:00Z", "startPoint": "setup",
    "steps": [{"timeStamp": "2026-11-21T12:00:01.250Z", "stepName": "Copy", "stepType": "ENTER"}],
    "fields": [{"name": "F", "type": "float", "value": 0.625}]}]})";
  zt_report* report = nullptr;
  ASSERT_EQ(zt_report_from_json(json.data(), json.size(), ZT_OFFLINE, &report), ZT_OK);
  const char* text = nullptr;
  const char* id = nullptr;
  EXPECT_EQ(zt_report_get(report, "reportId", &id), ZT_OK);
  const std::string reportId = id;
  EXPECT_EQ(zt_report_render(report, true, &text, nullptr), ZT_OK);

  const std::string file = data.path("report.json");
  std::ofstream(file) << json;
  std::string expected = runProgram(paths::kReportProgram, {"render", file}).output;
  const std::size_t start = expected.find('{');
  expected.replace(start, reportId.size(), reportId);
  EXPECT_EQ(text, expected);
  zt_report_destroy(report);
}

}  // namespace
}  // namespace zt::test
