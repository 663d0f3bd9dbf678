#include "tools/ztinbox/http/EventStream.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include "tools/ztinbox/api/ReportJson.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr const char* kEventType = "text/event-stream";
/// What a client waits before it connects again, in milliseconds.
constexpr const char* kGreeting = "retry: 1000\n\n";
constexpr const char* kChanged = "event: changed\ndata: {}\n\n";
constexpr const char* kHeartbeat = ": still here\n\n";
constexpr milliseconds kHeartbeatPause{5'000};
/// How soon it is noticed that the client left.
constexpr milliseconds kSlice{100};
/// Reports that are read at once.
constexpr std::size_t kPortion = 50;

bool write(httplib::DataSink& sink, const std::string& text) {
  return sink.write(text.data(), text.size());
}

std::string eventOf(const Report& report) {
  std::string event = "id: ";
  event.append(std::to_string(report.number)).append("\nevent: report\ndata: ");
  return event.append(reportJson(report)).append("\n\n");
}

}  // namespace

void EventStream::answer(Exchange& exchange, ReportStore& store,
                         std::optional<std::uint64_t> after) {
  const std::uint64_t newest = store.arrivals().lastNumber();
  const auto stream = std::make_shared<EventStream>(store, exchange.connection,
                                                    std::min(after.value_or(newest), newest));
  // The last answer of its connection.
  exchange.connection.endAfterAnswer();
  exchange.response.set_chunked_content_provider(
      kEventType, [stream](std::size_t, httplib::DataSink& sink) { return stream->goOn(sink); });
}

bool EventStream::goOn(httplib::DataSink& sink) {
  if (!_begun) {
    _begun = true;
    return write(sink, kGreeting);
  }
  const auto heartbeat = Clock::now() + kHeartbeatPause;
  while (!_store.arrivals().waitForNews(_last, _changes, kSlice)) {
    if (_connection.isLeftWithin(milliseconds::zero())) {
      _connection.endSilently();
      return false;
    }
    if (Clock::now() >= heartbeat) return write(sink, kHeartbeat);
  }
  // Asked for before the reports, so that no change of one that is not told yet is missed.
  const std::uint64_t changes = _store.arrivals().changes();
  if (changes > _changes) {
    _changes = changes;
    if (!write(sink, kChanged)) return false;
  }
  const std::uint64_t newest = _store.arrivals().lastNumber();
  const auto reports = _store.listAfter(_last, kPortion);
  for (const Report& report : reports) {
    if (!write(sink, eventOf(report))) return false;
    _last = report.number;
  }
  // Those that are gone again count as seen.
  if (reports.size() < kPortion) _last = std::max(_last, newest);
  return !_connection.isLeftWithin(milliseconds::zero());
}

}  // namespace zt::inbox
