#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <string_view>
#include <thread>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/portal/Companion.h"
#include "ztportal/portal/ReportStore.h"
#include "ztportal/portal/ReportingServer.h"
#include "ztportal/portal/ZtReportStore.h"
#include "ztportal/system/Consent.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtHost.h"

// ZtReportStore::send.

namespace zt {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;
using Date = std::chrono::system_clock;

constexpr seconds kLongestRetryAfter = std::chrono::hours(24);
constexpr seconds kWritingTime{10};  // a file younger than this may be incomplete
constexpr seconds kTestModeTime{1};
constexpr milliseconds kWaitSlice{50};

/// Statuses that say something about the server or about us, not about the report.
constexpr std::array<int, 10> kServerStatuses{401, 403, 404, 405, 407, 408, 429, 502, 503, 504};

Files& files() { return Platform::current().files(); }

template <class Number>
std::optional<Number> takeNumber(std::string_view& line) {
  Number number{};
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
  if (error != std::errc()) return std::nullopt;
  line.remove_prefix(static_cast<std::size_t>(end - line.data()));
  if (line.starts_with(' ')) line.remove_prefix(1);
  return number;
}

/// What the next call must know, in any process: how often each report failed, and until when a
/// server asked to wait. A file of lines:
///
///     wait 1790000000 4711        seconds since 1970, and a hash of the configuration URL
///     3 {0E4D0F7C-9A7B-4B21-A4B2-7F3F7D1E7A55}.ztr
///
/// Anything else in it is ignored. If it is lost, counting starts again.
class SendingState {
 public:
  SendingState(std::string path, std::string_view url)
      : _path(std::move(path)), _server(std::hash<std::string_view>()(url)) {
    _text = files().read(_path, kReportFileLimit).value_or("");
    for (std::string_view text = _text; !text.empty();) readLine(takeLine(text));
  }

  unsigned& failures(const std::string& report) { return _failures[nameOf(report)]; }
  void forget(const std::string& report) { _failures.erase(nameOf(report)); }

  /// How long the server still asks to wait, from now; never negative.
  seconds retryAfter() const {
    const auto left = std::chrono::ceil<seconds>(_waitEnd - Date::now());
    // A date further ahead comes from a clock that was wrong.
    return left.count() > 0 && left <= kLongestRetryAfter ? left : seconds(0);
  }
  void setRetryAfter(seconds time) { _waitEnd = Date::now() + std::min(time, kLongestRetryAfter); }

  /// Writes what has changed. Forgets reports that are not in the folder `reports` any more.
  void save(const std::string& reports) {
    std::string text;
    if (retryAfter().count() > 0) {
      const auto end = std::chrono::floor<seconds>(_waitEnd.time_since_epoch());
      appendText(text, "wait ", std::to_string(end.count()), " ", std::to_string(_server), "\n");
    }
    for (const auto& [name, count] : _failures) {
      if (!files().exists(reports + "/" + name)) continue;
      appendText(text, std::to_string(count), " ", name, "\n");
    }
    if (text == _text) return;
    _text = std::move(text);
    const bool isDone =
        _text.empty() ? files().remove(_path) : files().replacePrivate(_path, _text);
    if (!isDone) log(ZtLogLevel::Warning, "store", "cannot write ", _path);
  }

 private:
  static std::string nameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

  void readLine(std::string_view line) {
    constexpr std::string_view kWait = "wait ";
    if (line.starts_with(kWait)) {
      line.remove_prefix(kWait.size());
      const auto end = takeNumber<std::int64_t>(line);
      if (end && takeNumber<std::size_t>(line) == _server)
        _waitEnd = Date::time_point(seconds(*end));
    } else if (const auto count = takeNumber<unsigned>(line)) {
      _failures[std::string(line)] = *count;
    }
  }

  std::string _path;
  std::size_t _server;
  std::string _text;  // content of the file
  Date::time_point _waitEnd;
  std::map<std::string, unsigned> _failures;
};

/// One call of ZtReportStore::send.
class StoreSender {
 public:
  StoreSender(const ZtReportStore& store, const ZtSendOptions& options)
      : _store(store),
        _options(options),
        _folder(store.folder().view()),
        _state(besideReports(_folder, kSendingState), options.configurationUrl.view()),
        _server(options.configurationUrl, options.transport.value_or(ZtHost::transportOptions())),
        _delay(options.retryDelay),
        _random(static_cast<unsigned>(_start.time_since_epoch().count())) {}

  ZtSendResult run() {
    _result.removed = _store.enforceLimits();
    do {
      _hasFailures = false;
      _result.end = tryAll();
      _state.save(_folder);
    } while (isWorthAnotherTry() && wait());
    _result.retryAfter = _state.retryAfter();
    _result.left = ReportStore::filesIn(_folder).size();
    log(ZtLogLevel::Info, "store", std::to_string(_result.accepted), " saved reports accepted, ",
        std::to_string(_result.left), " left");
    return _result;
  }

 private:
  /// Tries each report once.
  ZtSendEnd tryAll() {
    if (const auto end = requestedEnd()) return *end;
    std::vector<ZtSavedReport> reports = _store.list();
    if (reports.empty()) return ZtSendEnd::Done;
    if (_state.retryAfter().count() > 0) return ZtSendEnd::Deferred;
    _server = ReportingServer(_options.configurationUrl, _server.options());
    _server.connect(false);
    if (!_server.isReady()) return ZtSendEnd::Offline;
    for (ZtSavedReport& report : reports) {
      if (const auto end = requestedEnd()) return *end;
      ZtDelivery delivery = deliver(report);
      const std::optional<ZtSendEnd> end = settle(report, delivery);
      if (_options.progress && !_options.progress(report, delivery)) return ZtSendEnd::Cancelled;
      if (end) return *end;
    }
    return ZtSendEnd::Done;
  }

  std::optional<ZtSendEnd> requestedEnd() const {
    if (consentIsRevoked()) return ZtSendEnd::NoConsent;
    if (_options.isCancelled && _options.isCancelled()) return ZtSendEnd::Cancelled;
    if (isBeyondBudget(milliseconds(0))) return ZtSendEnd::Budget;
    return std::nullopt;
  }

  bool isBeyondBudget(milliseconds wait) const {
    return _options.budget.count() > 0 && Clock::now() + wait >= _start + _options.budget;
  }

  /// The request in the file, which may be written while it is listed or read: `report` gets the
  /// facts of what was read.
  static std::optional<std::string> read(ZtSavedReport& report, std::string* problem) {
    constexpr int kMostTries = 3;
    std::optional<std::string> request;
    for (int tries = 0; tries < kMostTries; ++tries) {
      const std::optional<FileFacts> facts = files().facts(report.path);
      request = ReportStore::request(report.path, problem);
      if (!facts) return request;
      report.bytes = facts->bytes;
      report.time = facts->time;
      if (files().facts(report.path) == facts) return request;
    }
    return request;
  }

  ZtDelivery deliver(ZtSavedReport& report) try {
    ZtDelivery delivery;
    auto request = read(report, &delivery.message);
    if (!request) {
      delivery.outcome = ZtDeliveryOutcome::Unreadable;
      delivery.error = ZtDeliveryError::File;
      return delivery;
    }
    if (!passesRequestHook(*request)) {
      delivery.outcome = ZtDeliveryOutcome::Dropped;
      delivery.message = "The host's request hook has dropped the report.";
      return delivery;
    }
    const ZtString text = *request;
    broadcastRequest(text);
    return _server.sendTo(url(), text);
  } catch (const ZtException& exception) {
    ZtDelivery delivery;
    delivery.message = exception.what();
    return delivery;
  } catch (const std::bad_alloc&) {
    ZtDelivery delivery;
    delivery.error = ZtDeliveryError::Memory;
    return delivery;
  }

  /// The look-up of the test mode walks through all processes of the machine, which takes a third
  /// of the time of a delivery.
  const ZtString& url() {
    const Clock::time_point now = Clock::now();
    if (_url.isNull() || now - _urlTime > kTestModeTime) {
      _url = _server.url();
      _urlTime = now;
    }
    return _url;
  }

  /// Removes, counts or sets aside `report`, as its `delivery` asks. Returns why sending ends, if
  /// it does.
  std::optional<ZtSendEnd> settle(const ZtSavedReport& report, ZtDelivery& delivery) {
    delivery.savedTo = report.path;
    switch (delivery.outcome) {
      case ZtDeliveryOutcome::Accepted:
        accept(report, delivery);
        return std::nullopt;
      case ZtDeliveryOutcome::Unreadable:
        if (!isYoung(report)) countFailure(report, delivery);
        return std::nullopt;
      case ZtDeliveryOutcome::Refused:
      case ZtDeliveryOutcome::InvalidResponse:
        if (isAboutTheServer(delivery)) return ZtSendEnd::Deferred;
        break;
      case ZtDeliveryOutcome::Unreachable:
      case ZtDeliveryOutcome::TimedOut:
        if (_server.readVersion().empty()) return ZtSendEnd::Offline;
        break;
      case ZtDeliveryOutcome::Offline:
      case ZtDeliveryOutcome::NoTestUrl:
        return ZtSendEnd::Offline;
      case ZtDeliveryOutcome::NoConsent:
        return ZtSendEnd::NoConsent;
      case ZtDeliveryOutcome::NotSent:
      case ZtDeliveryOutcome::Dropped:
        return std::nullopt;
    }
    _hasFailures = true;
    countFailure(report, delivery);
    return std::nullopt;
  }

  void accept(const ZtSavedReport& report, ZtDelivery& delivery) {
    ++_result.accepted;
    _delay = _options.retryDelay;
    _state.forget(report.path);
    const std::optional<FileFacts> now = files().facts(report.path);
    const bool isChanged = now && (now->bytes != report.bytes || now->time != report.time);
    if (!isChanged && (!now || _store.remove(report))) delivery.savedTo.clear();
  }

  static bool isYoung(const ZtSavedReport& report) {
    const auto age = Date::now() - report.time;
    return age >= Date::duration(0) && age < kWritingTime;
  }

  bool isAboutTheServer(const ZtDelivery& delivery) {
    if (delivery.retryAfter.count() > 0) _state.setRetryAfter(delivery.retryAfter);
    return delivery.retryAfter.count() > 0 ||
           std::find(kServerStatuses.begin(), kServerStatuses.end(), delivery.httpStatus) !=
               kServerStatuses.end();
  }

  void countFailure(const ZtSavedReport& report, ZtDelivery& delivery) {
    if (_options.attempts == 0 || ++_state.failures(report.path) < _options.attempts) return;
    if (!_store.setAside(report)) return;
    log(ZtLogLevel::Warning, "store", "set aside after ", std::to_string(_options.attempts),
        " failures: ", report.path, ": ", delivery.message);
    delivery.savedTo.clear();
    _state.forget(report.path);
    ++_result.setAside;
  }

  bool isWorthAnotherTry() const {
    if (!_options.retry) return false;
    return _result.end == ZtSendEnd::Offline || _result.end == ZtSendEnd::Deferred ||
           (_result.end == ZtSendEnd::Done && _hasFailures && _options.attempts > 0);
  }

  /// Waits before the next try. False if `send` has to end; then the result says why.
  bool wait() {
    std::uniform_int_distribution<milliseconds::rep> part(0, _delay.count() / 2);
    const milliseconds time =
        std::max<milliseconds>(_delay - milliseconds(part(_random)), _state.retryAfter());
    _delay = std::min(2 * _delay, _options.longestDelay);
    if (isBeyondBudget(time)) {
      _result.end = ZtSendEnd::Budget;
      return false;
    }
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
      if (const auto reason = requestedEnd()) {
        _result.end = *reason;
        return false;
      }
      std::this_thread::sleep_for(std::min<Clock::duration>(end - Clock::now(), kWaitSlice));
    }
    return true;
  }

  const ZtReportStore& _store;
  const ZtSendOptions& _options;
  const Clock::time_point _start = Clock::now();
  const std::string _folder;
  SendingState _state;
  ReportingServer _server;
  ZtString _url;
  Clock::time_point _urlTime;
  milliseconds _delay;
  std::minstd_rand _random;
  bool _hasFailures = false;
  ZtSendResult _result;
};

}  // namespace

}  // namespace zt

ZtSendResult ZtReportStore::send(const ZtSendOptions& options) const try {
  ZtSendResult result;
  result.end = ZtSendEnd::NoStore;
  if (_folder.isNull()) return result;
  if (options.transport && !options.transport->problem().empty()) {
    result.end = ZtSendEnd::WrongOptions;
    return result;
  }
  const zt::FileLock lock =
      zt::Platform::current().files().lock(zt::besideReports(_folder.view(), "sending.lock"));
  if (lock.held != nullptr) return zt::StoreSender(*this, options).run();
  if (lock.isBusy) result.end = ZtSendEnd::Busy;
  result.left = zt::ReportStore::filesIn(std::string(_folder.view())).size();
  return result;
} catch (const std::bad_alloc&) {
  ZtSendResult result;
  result.end = ZtSendEnd::NoStore;
  return result;
}
