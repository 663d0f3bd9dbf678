// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Inbox.h"
#include "tests/support/LoopbackClient.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

namespace zt::test {
namespace {

using nlohmann::json;

struct Answer {
  int status = 0;
  std::string body;
};

Answer ask(const Inbox& inbox, const std::string& method, const std::string& path,
           const std::string& body = "") {
  auto client = inbox.newClient();
  const auto answer = method == "GET"      ? client.get(path)
                      : method == "DELETE" ? client.remove(path)
                      : method == "PUT"    ? client.put(path, body, "application/json")
                                           : client.post(path, body, "application/json");
  if (!answer) return {};
  EXPECT_EQ(answer->header("X-Content-Type-Options"), "nosniff") << path;
  const bool isProblem = answer->header("Content-Type") == "application/problem+json";
  EXPECT_EQ(isProblem, answer->status >= 400) << path;
  return {answer->status, answer->body};
}

std::vector<int> numbers(const Inbox& inbox, const std::string& query) {
  std::vector<int> all;
  for (const json& report : json::parse(ask(inbox, "GET", "/api/v1/reports" + query).body)) {
    all.push_back(report["number"]);
  }
  return all;
}

TEST(ApiTest, AnswersErrorsWithProblemDocuments) {
  const Inbox inbox;
  const std::map<int, const char*> titles = {{400, "Bad Request"},
                                             {404, "Not Found"},
                                             {405, "Method Not Allowed"},
                                             {408, "Request Timeout"}};
  const struct {
    const char* method;
    const char* path;
    int status;
    const char* reason;
  } rows[] = {
      {"GET", "/api/v1/reports?limit=0", 400, "limit must be a whole number from 1 to 1000"},
      {"GET", "/api/v1/reports?limit=", 400, "limit must be a whole number from 1 to 1000"},
      {"GET", "/api/v1/reports?before=x", 400, "before must be a whole number from 1"},
      {"GET", "/api/v1/reports?test=yes", 400, "test must be true or false"},
      {"GET", "/api/v1/reports?answer=no", 400,
       "answer must be error or accept, refuse, garbage, error:STATUS (200 to 599), hang, drop or "
       "truncate"},
      {"GET", "/api/v1/reports?since=soon", 400,
       "since must be a date (2026-11-21) or a time with its offset (2026-11-21T12:00:00Z)"},
      {"GET", "/api/v1/reports?custommer=a", 400, "unknown parameter: custommer"},
      {"GET", "/api/v1/reports?customer=a&customer=b", 400, "customer can be given only once"},
      {"DELETE", "/api/v1/reports?custommer=a", 400, "unknown parameter: custommer"},
      {"DELETE", "/api/v1/reports?limit=1", 400, "unknown parameter: limit"},
      {"GET", "/api/v1/reports/1?x=y", 400, "unknown parameter: x"},
      {"GET", "/api/v1/events?after=x", 400, "after must be a whole number from 0"},
      {"PUT", "/api/v1/reports/read", 400, R"(must be {"read": true} or {"read": false})"},
      {"GET", "/api/v1/reports/1/nothing", 404, "no such address"},
      {"DELETE", "/api/v1/events", 405, "method not allowed: DELETE"},
      {"GET", "/api/v1/reports/1/read", 405, "method not allowed: GET"},
      {"GET", "/api/v1/reports/1", 404, "no such report"},
      {"GET", "/api/v1/reports/x", 404, "no such report"},
      {"GET", "/api/v1/reports/99999999999999999999", 404, "no such report"},
      {"DELETE", "/api/v1/reports/7", 404, "no such report"},
      {"GET", "/api/v1/wait?count=-1", 400, "count must be a whole number from 0"},
      {"GET", "/api/v1/wait?timeout=nan", 400,
       "timeout must be a number of seconds from 0 to 3600"},
      {"GET", "/api/v1/wait?count=1&timeout=0.01", 408, "timed out: 0 arrived"},
      {"GET", "/api/v1/nothing", 404, "no such address"},
      {"GET", "/api/v2/reports", 404, "no such address"},
  };
  for (const auto& row : rows) {
    const Answer answer = ask(inbox, row.method, row.path);
    EXPECT_EQ(answer.status, row.status) << row.path;
    const json problem = {{"type", "about:blank"},
                          {"title", titles.at(row.status)},
                          {"status", row.status},
                          {"detail", row.reason}};
    EXPECT_EQ(answer.body, problem.dump() + "\n") << row.path;
  }
}

TEST(ApiTest, GivesOneReportAndItsBytes) {
  Inbox inbox;
  SampleReport report;
  report.customerId = std::string("\xff\0<b>\x1b", 6);
  inbox.post(report.text());
  const json one = json::parse(ask(inbox, "GET", "/api/v1/reports/1").body);
  const json listed = json::parse(inbox.reportList())[0];
  for (const auto& [key, value] : listed.items()) EXPECT_EQ(one[key], value) << key;
  EXPECT_EQ(one["customerId"], std::string("\xef\xbf\xbd\0<b>\x1b", 8));

  auto client = inbox.newClient();
  const auto raw = client.get("/api/v1/reports/1/raw");
  ASSERT_TRUE(raw);
  EXPECT_EQ(raw->body, report.text());
  EXPECT_EQ(raw->header("Content-Type"), "text/plain; charset=utf-8");
  EXPECT_EQ(raw->header("X-Content-Type-Options"), "nosniff");
}

TEST(ApiTest, FindsReportsByWhatIsInThem) {
  const Inbox inbox;
  SampleReport report;
  report.value = "Zürich disk full";
  inbox.post(report.text());
  report.customerId = "a b&c";
  report.machineId = "{OTHER}";
  report.applicationId = "{A}";
  report.pools = {"CUSTOM"};
  report.value = "full disk";
  inbox.post(report.text());
  const struct {
    const char* query;
    std::vector<int> numbers;
  } rows[] = {
      {"", {2, 1}},
      {"?limit=1", {2}},
      {"?limit=1&before=2", {1}},
      {"?customer=a%20b%26c", {2}},
      {"?text=DISK%20full", {2, 1}},
      {"?text=%22disk%20full%22", {1}},
      {"?text=zuri", {1}},
      {"?text=di", {}},
      {"?text=%2D%2A", {}},
      {"?text=", {}},
      {"?text=edition", {2, 1}},
      {"?version=0", {}},
      {"?reportId=%7Bnone%7D", {}},
      {"?answer=accept", {2, 1}},
      {"?answer=error", {}},
      {"?result=failed", {}},
      {"?machine={OTHER}", {2}},
      {"?application=%7BA%7D", {2}},
      {"?pool=CUSTOM", {2}},
      {"?pool=CUSTOM&text=zuri", {}},
      {"?test=false&read=false&since=2020-01-01&until=2120-01-01T00:00:00Z", {2, 1}},
      {"?until=2020-01-01", {}},
      {"?before=18446744073709551615", {2, 1}},
  };
  for (const auto& row : rows) EXPECT_EQ(numbers(inbox, row.query), row.numbers) << row.query;
}

TEST(ApiTest, DeletesAndMarksWhatIsFound) {
  const Inbox inbox;
  for (const char* customer : {"a", "b", "a", "c"}) inbox.post(reportOf(customer).text());
  EXPECT_EQ(ask(inbox, "PUT", "/api/v1/reports/4/read", R"({"read": true})").body,
            "{\"changed\":1}\n");
  EXPECT_EQ(ask(inbox, "PUT", "/api/v1/reports/read?customer=a", R"({"read": true})").body,
            "{\"changed\":2}\n");
  EXPECT_EQ(numbers(inbox, "?read=false"), (std::vector<int>{2}));
  EXPECT_EQ(ask(inbox, "PUT", "/api/v1/reports/read", R"({"read": false})").body,
            "{\"changed\":3}\n");
  EXPECT_EQ(ask(inbox, "DELETE", "/api/v1/reports?customer=a&before=3").body, "{\"deleted\":1}\n");
  EXPECT_EQ(ask(inbox, "DELETE", "/api/v1/reports?text=nothing").body, "{\"deleted\":0}\n");
  EXPECT_EQ(ask(inbox, "DELETE", "/api/v1/reports/3").body, "{\"deleted\":1}\n");
  EXPECT_EQ(numbers(inbox, ""), (std::vector<int>{4, 2}));
  EXPECT_EQ(ask(inbox, "DELETE", "/api/v1/reports").body, "{\"deleted\":2}\n");
  EXPECT_EQ(numbers(inbox, ""), (std::vector<int>{}));
}

TEST(ApiTest, ShowsTheRequestAndTheOtherReportsOfTheSameId) {
  Inbox inbox;
  const RawClient client(inbox.port());
  ASSERT_TRUE(client.send(postRequest("/soap", SampleReport().text(),
                                      "X-Two:  a b \r\nx-empty:\r\nX-Two: %0d%0a<b>\r\n")));
  inbox.waitFor(1);
  inbox.post(SampleReport().text());
  inbox.post(SampleReport().text());
  ask(inbox, "GET", "/api/v1/wait?count=3");
  const json one = json::parse(ask(inbox, "GET", "/api/v1/reports/1").body);
  EXPECT_EQ(one["sameId"], json({2, 3}));
  EXPECT_EQ(one["request"], "POST /soap HTTP/1.1");
  const std::string size = std::to_string(SampleReport().text().size());
  EXPECT_EQ(one["headers"], json({{{"name", "Host"}, {"value", "127.0.0.1"}},
                                  {{"name", "X-Two"}, {"value", "a b"}},
                                  {{"name", "x-empty"}, {"value", ""}},
                                  {{"name", "X-Two"}, {"value", "%0d%0a<b>"}},
                                  {{"name", "Content-Length"}, {"value", size}}}));
}

TEST(ApiTest, ShowsPoolsFieldsAndSteps) {
  const Inbox inbox;
  SampleReport report;
  report.moreFields = SampleReport::field("SUCCESSFULL", "TRUE") +
                      crlf(fieldLines("array LIST\n  integer COUNT = 7", 15, true));
  inbox.post(report.text());
  const json one = json::parse(ask(inbox, "GET", "/api/v1/reports/1").body);
  EXPECT_EQ(one["complete"], true);
  EXPECT_EQ(one["content"],
            json::parse(R"([{"type": "EXECUTION", "date": "2026-11-21T12:00:00.123UTC",
        "result": "succeeded", "duration": null, "steps": [],
        "fields": [{"name": "EDITION", "type": "string", "value": "Home"},
                   {"name": "SUCCESSFULL", "type": "string", "value": "TRUE"},
                   {"name": "LIST", "type": "array", "groups": [
                     [{"name": "COUNT", "type": "integer", "value": "7"}]]}]}])"));
  EXPECT_EQ(one["result"], "succeeded");
  EXPECT_EQ(one["fault"], nullptr);
}

TEST(ApiTest, TellsWhereAReportCannotBeRead) {
  const Inbox inbox;
  SampleReport report;
  report.pools = {"EXECUTION", "CUSTOM"};
  report.moreFields = "               <Field>\r\n";
  inbox.post(report.text());
  const json one = json::parse(ask(inbox, "GET", "/api/v1/reports/1").body);
  EXPECT_EQ(one["fault"],
            "line 18, column 16: expected \"<Field\" after 15 blanks or \"</Fields>\" after 13");
  EXPECT_EQ(one["content"],
            json::parse(R"([{"type": "EXECUTION", "date": "2026-11-21T12:00:00.123UTC",
        "result": null, "duration": null, "steps": [],
        "fields": [{"name": "EDITION", "type": "string", "value": "Home"}]}])"));
  EXPECT_EQ(one["complete"], true);
  EXPECT_EQ(one["pools"], json({"EXECUTION", "CUSTOM"}));
  EXPECT_EQ(json::parse(ask(inbox, "GET", "/api/v1/reports?text=custom").body).size(), 1U)
      << "all of it is searched";
}

TEST(ApiTest, CountsForCharts) {
  Inbox inbox({"--answer", "refuse"});
  inbox.post(SampleReport().text());
  inbox.behave(R"({"answer": "accept"})");
  inbox.post(reportOf("other").text());
  json stats = json::parse(ask(inbox, "GET", "/api/v1/stats").body);
  EXPECT_EQ(stats["arrivals"], 2);
  EXPECT_EQ(stats["reports"], 2);
  EXPECT_EQ(stats["unread"], 2);
  int accepted = 0;
  for (const json& minute : stats["minutes"]) accepted += minute["accepted"].get<int>();
  EXPECT_EQ(accepted, 1);
  stats = json::parse(ask(inbox, "GET", "/api/v1/stats?customer=other").body);
  EXPECT_EQ(stats["reports"], 1);
  EXPECT_EQ(stats["arrivals"], 2);
}

TEST(ApiTest, ADeletionWithoutALengthIsAnsweredAtOnce) {
  // The HTTP library once read such a request up to the end of the connection.
  const Inbox inbox;
  RawClient client(inbox.port());
  ASSERT_TRUE(client.send("DELETE /api/v1/reports HTTP/1.1\r\nHost: " + inbox.url().substr(7) +
                          "\r\nConnection: close\r\n\r\n"));
  EXPECT_TRUE(client.receiveAll().ends_with("{\"deleted\":0}\n"));
}

TEST(ApiTest, WaitsForReports) {
  Inbox inbox;
  std::thread sending([&inbox] {
    for (int i = 0; i < 3; ++i) inbox.post(SampleReport().text());
  });
  EXPECT_EQ(ask(inbox, "GET", "/api/v1/wait?count=3&timeout=25").body, "{\"count\":3}\n");
  sending.join();
  inbox.clear();
  EXPECT_EQ(ask(inbox, "GET", "/api/v1/wait?timeout=0").status, 408);
}

TEST(ApiTest, ShowsAndChangesTheBehaviour) {
  const Inbox inbox({"--answer", "refuse", "--slow", "1"});
  EXPECT_EQ(ask(inbox, "GET", "/api/v1/behaviour").body,
            "{\"answer\":\"refuse\",\"failRate\":0.0,\"scenario\":[],\"seed\":0,\"slow\":1}\n");
  const Answer changed = ask(inbox, "PUT", "/api/v1/behaviour",
                             R"({"slow": 0, "scenario": [{"answer": "drop", "times": 2}]})");
  EXPECT_EQ(changed.status, 200);
  EXPECT_EQ(changed.body,
            "{\"answer\":\"refuse\",\"failRate\":0.0,\"scenario\":[{\"answer\":\"drop\","
            "\"times\":2}],\"seed\":0,\"slow\":0}\n");
}

TEST(ApiTest, AWrongBehaviourChangesNothing) {
  const Inbox inbox;
  const std::string before = ask(inbox, "GET", "/api/v1/behaviour").body;
  const Answer wrong = ask(inbox, "PUT", "/api/v1/behaviour", R"({"answer": "drop", "Slow": 1})");
  EXPECT_EQ(wrong.status, 400);
  EXPECT_EQ(json::parse(wrong.body)["detail"], "/Slow: unknown key");
  EXPECT_EQ(ask(inbox, "GET", "/api/v1/behaviour").body, before);
}

}  // namespace
}  // namespace zt::test
