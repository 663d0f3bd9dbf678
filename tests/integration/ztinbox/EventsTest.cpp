// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
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
using Clock = std::chrono::steady_clock;

/// A client of the event stream; decodes the chunked transfer coding (RFC 9112, section 7.1).
class Events {
 public:
  explicit Events(const Inbox& inbox, const std::string& query = "",
                  const std::string& headers = "")
      : _client(inbox.port()) {
    EXPECT_TRUE(_client.send("GET /api/v1/events" + query + " HTTP/1.1\r\nHost: " +
                             inbox.url().substr(7) + "\r\n" + headers + "\r\n"));
    while (_raw.find("\r\n\r\n") == std::string::npos) {
      const std::string more = _client.receiveSome();
      if (more.empty()) break;
      _raw += more;
    }
    const std::size_t end = _raw.find("\r\n\r\n");
    _head = _raw.substr(0, end);
    _raw.erase(0, end + 4);
  }

  const std::string& head() const { return _head; }

  /// The next block of lines, without its blank line; empty at the end of the stream.
  std::string next() {
    for (;;) {
      const std::size_t end = _text.find("\n\n");
      if (end != std::string::npos) {
        std::string block = _text.substr(0, end);
        _text.erase(0, end + 2);
        return block;
      }
      if (!readChunk()) return "";
    }
  }

  /// The next event, with comments left out.
  std::string nextEvent() {
    std::string block = next();
    while (block.starts_with(":") || block.starts_with("retry:")) block = next();
    return block;
  }

 private:
  bool readChunk() {
    for (;;) {
      const std::size_t lineEnd = _raw.find("\r\n");
      if (lineEnd != std::string::npos) {
        const std::size_t size = std::stoul(_raw, nullptr, 16);
        const std::size_t end = lineEnd + 2 + size + 2;
        if (_raw.size() >= end) {
          _text += _raw.substr(lineEnd + 2, size);
          _raw.erase(0, end);
          return size > 0;
        }
      }
      const std::string more = _client.receiveSome();
      if (more.empty()) return false;
      _raw += more;
    }
  }

  RawClient _client;
  std::string _head;
  std::string _raw;
  std::string _text;
};

std::string idOf(const std::string& event) { return event.substr(0, event.find('\n')); }

TEST(EventsTest, TellsEachNewReport) {
  Inbox inbox;
  inbox.post(SampleReport().text());
  Events events(inbox);
  EXPECT_TRUE(events.head().starts_with("HTTP/1.1 200 OK\r\n")) << events.head();
  EXPECT_NE(events.head().find("\r\nContent-Type: text/event-stream\r\n"), std::string::npos);
  EXPECT_EQ(events.next(), "retry: 1000");
  SampleReport report;
  report.customerId = "a\r\ndata: b\xff";
  inbox.post(report.text());
  inbox.post(SampleReport().text());
  const std::string event = events.nextEvent();
  constexpr std::string_view kStart = "id: 2\nevent: report\ndata: ";
  ASSERT_TRUE(event.starts_with(kStart)) << event;
  EXPECT_EQ(json::parse(event.substr(kStart.size())), json::parse(inbox.reportList())[1]);
  EXPECT_EQ(idOf(events.nextEvent()), "id: 3");
}

TEST(EventsTest, GoesOnWhereTheClientWas) {
  const Inbox inbox;
  for (int i = 0; i < 120; ++i) inbox.post(SampleReport().text());
  auto client = inbox.newClient();
  client.remove("/api/v1/reports/119");
  const struct {
    const char* query;
    const char* headers;
    const char* first;
  } rows[] = {
      {"?after=0", "", "id: 1"},
      {"?after=117", "", "id: 118"},
      {"", "Last-Event-ID: 118\r\n", "id: 120"},
      {"?after=0", "Last-Event-ID: 117\r\n", "id: 118"},
  };
  for (const auto& row : rows) {
    Events events(inbox, row.query, row.headers);
    EXPECT_EQ(idOf(events.nextEvent()), row.first) << row.query << row.headers;
  }
  Events all(inbox, "?after=0");
  for (int number = 1; number <= 120; ++number) {
    if (number == 119) continue;
    EXPECT_EQ(idOf(all.nextEvent()), "id: " + std::to_string(number));
  }
}

TEST(EventsTest, TellsWhenReportsAreDeletedOrMarked) {
  const Inbox inbox;
  for (int i = 0; i < 3; ++i) inbox.post(SampleReport().text());
  Events events(inbox);
  EXPECT_EQ(events.next(), "retry: 1000");
  auto client = inbox.newClient();
  const std::string changed = "event: changed\ndata: {}";
  client.put("/api/v1/reports/1/read", R"({"read": true})", "application/json");
  EXPECT_EQ(events.nextEvent(), changed);
  client.remove("/api/v1/reports/2");
  EXPECT_EQ(events.nextEvent(), changed);
  client.remove("/api/v1/reports/2");
  client.remove("/api/v1/reports");
  EXPECT_EQ(events.nextEvent(), changed);
  inbox.post(SampleReport().text());
  EXPECT_EQ(idOf(events.nextEvent()), "id: 4") << "what changed nothing is not told";
}

TEST(EventsTest, ANumberThatNoReportHasReachedMeansTheNext) {
  // A client that knew an older database.
  const Inbox inbox;
  Events events(inbox, "", "Last-Event-ID: 18446744073709551615\r\n");
  EXPECT_EQ(events.next(), "retry: 1000");
  inbox.post(SampleReport().text());
  EXPECT_EQ(idOf(events.nextEvent()), "id: 1");
}

TEST(EventsTest, ACommentShowsThatItIsAlive) {
  const Inbox inbox;
  Events events(inbox);
  EXPECT_EQ(events.next(), "retry: 1000");
  EXPECT_EQ(events.next(), ": still here");
}

TEST(EventsTest, AReaderThatTakesNothingHoldsUpNobody) {
  const Inbox inbox;
  SampleReport report;
  report.pools = std::vector<std::string>(60, std::string(1'000, 'p'));
  for (int i = 0; i < 200; ++i) inbox.post(report.text());
  // More than fits into the buffers of its connection.
  const RawClient stuck(inbox.port());
  ASSERT_TRUE(stuck.send("GET /api/v1/events?after=0 HTTP/1.1\r\nHost: " + inbox.url().substr(7) +
                         "\r\n\r\n"));
  Events events(inbox);
  EXPECT_EQ(events.next(), "retry: 1000");
  const auto start = Clock::now();
  inbox.post(SampleReport().text());
  EXPECT_EQ(idOf(events.nextEvent()), "id: 201");
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(4)) << "it waited for the other one";
}

}  // namespace
}  // namespace zt::test
