// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <string_view>
#include <thread>

#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/portal/Companion.h"
#include "ztportal/portal/ReportStore.h"
#include "ztportal/portal/ReportingServer.h"
#include "ztportal/portal/ZtReportStore.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtHost.h"

// ZtReportStore::send.

namespace zt {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr seconds kLongestRetryAfter = std::chrono::hours(24);
constexpr seconds kTestModeTime{1};
constexpr milliseconds kWaitSlice{50};

/// Statuses that say something about the server or about us, not about the report.
constexpr std::array<int, 10> kServerStatuses{401, 403, 404, 405, 407, 408, 429, 502, 503, 504};

Files& files() { return Platform::current().files(); }

std::int64_t secondsSince1970() {
  return std::chrono::floor<seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// The time until `time`, in seconds since 1970; zero if that is over. A time further ahead than
/// any that is written comes from a clock that was wrong.
seconds timeUntil(std::uint32_t time) {
  const seconds left(time - secondsSince1970());
  return left.count() > 0 && left <= kLongestRetryAfter + seconds(1) ? left : seconds(0);
}

/// What the next call must know, in any process: how often each report failed, and until when a
/// server asked to wait. A file with a number and a name in each line; other lines are ignored, and
/// if the file is lost, counting starts again:
///
///     3 {0E4D0F7C-9A7B-4B21-A4B2-7F3F7D1E7A55}.ztr
///     1790000000 wait 4711        seconds since 1970, and a hash of the configuration URL
class SendingState {
 public:
  explicit SendingState(std::string path) : _path(std::move(path)) {
    _text = files().read(_path, kReportFileLimit).value_or("");
    for (std::string_view text = _text; !text.empty();) {
      std::string_view name = takeLine(text);
      const auto number = parseNumber<std::uint32_t>(takeLine(name, ' '));
      if (number && !name.empty()) (*this)[name] = *number;
    }
  }

  /// The number of `name`; at first 0.
  std::uint32_t& operator[](std::string_view name) { return _numbers[std::string(name)]; }

  /// Writes what has changed. Forgets reports that are not in the folder `reports` any more, and
  /// times that are over.
  void save(const std::string& reports) {
    std::string text;
    for (const auto& [name, number] : _numbers) {
      if (number == 0) continue;
      std::string path;
      appendText(path, reports, "/", name);
      const bool isNeeded =
          name.ends_with(kReportEnding) ? files().exists(path) : timeUntil(number).count() > 0;
      if (isNeeded) appendText(text, std::to_string(number), " ", name, "\n");
    }
    if (text == _text) return;
    _text = std::move(text);
    const bool isDone =
        _text.empty() ? files().remove(_path) : files().replacePrivate(_path, _text);
    if (!isDone) log(ZtLogLevel::Warning, "store", "cannot write ", _path);
  }

 private:
  std::string _path;
  std::string _text;  // content of the file
  std::map<std::string, std::uint32_t> _numbers;
};

/// One call of ZtReportStore::send.
class StoreSender {
 public:
  StoreSender(const ZtReportStore& store, const ZtSendOptions& options)
      : _store(store),
        _options(options),
        _folder(store.folder().view()),
        _state(besideReports(_folder, kSendingState)),
        _waitEnd(_state["wait " + std::to_string(std::hash<ZtString>()(options.configurationUrl))]),
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
    _result.retryAfter = timeUntil(_waitEnd);
    _result.left = ReportStore::filesIn(_folder).size();
    log(ZtLogLevel::Info, "store", std::to_string(_result.accepted), " saved reports accepted, ",
        std::to_string(_result.left), " left");
    return _result;
  }

 private:
  std::uint32_t& failures(const ZtSavedReport& report) {
    return _state[std::string_view(report.path).substr(_folder.size() + 1)];
  }

  /// Tries each report once.
  ZtSendEnd tryAll() {
    if (const auto end = requestedEnd()) return *end;
    std::vector<ZtSavedReport> reports = _store.list();
    if (reports.empty()) return ZtSendEnd::Done;
    if (timeUntil(_waitEnd).count() > 0) return ZtSendEnd::Deferred;
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
    for (int tries = 1;; ++tries) {
      const std::optional<FileFacts> facts = files().facts(report.path);
      auto request = ReportStore::request(report.path, problem);
      if (!facts) return request;
      report.bytes = facts->bytes;
      report.time = facts->time;
      if (tries == 3 || files().facts(report.path) == facts) return request;
    }
  }

  ZtDelivery deliver(ZtSavedReport& report) try {
    ZtDelivery delivery;
    auto request = read(report, &delivery.message);
    if (!request) {
      // Without the problem, which may quote a value.
      log(ZtLogLevel::Warning, "store", report.path, " is skipped, because it cannot be sent");
      delivery.outcome = ZtDeliveryOutcome::Unreadable;
      delivery.error = ZtDeliveryError::File;
      return delivery;
    }
    if (!passesRequestHook(*request)) return ReportingServer::dropped();
    const ZtString text = *request;
    broadcastRequest(text);
    return _server.sendTo(url(), text);
  } catch (const std::exception& error) {
    ZtDelivery delivery;
    delivery.message = error.what();
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
        if (!mayBeIncomplete(report.time)) countFailure(report, delivery);
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
    failures(report) = 0;
    const std::optional<FileFacts> now = files().facts(report.path);
    const bool isChanged = now && (now->bytes != report.bytes || now->time != report.time);
    if (!isChanged && (!now || _store.remove(report))) delivery.savedTo.clear();
  }

  bool isAboutTheServer(const ZtDelivery& delivery) {
    if (delivery.retryAfter.count() > 0) {
      const seconds wait = std::min(delivery.retryAfter, kLongestRetryAfter);
      _waitEnd = static_cast<std::uint32_t>(secondsSince1970() + wait.count() + 1);  // rounded up
      return true;
    }
    return std::find(kServerStatuses.begin(), kServerStatuses.end(), delivery.httpStatus) !=
           kServerStatuses.end();
  }

  void countFailure(const ZtSavedReport& report, ZtDelivery& delivery) {
    if (_options.attempts == 0 || ++failures(report) < _options.attempts) return;
    if (!_store.setAside(report)) return;
    log(ZtLogLevel::Warning, "store", "set aside after ", std::to_string(_options.attempts),
        " failures: ", report.path);
    delivery.savedTo.clear();
    failures(report) = 0;
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
        std::max<milliseconds>(_delay - milliseconds(part(_random)), timeUntil(_waitEnd));
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
  std::uint32_t& _waitEnd;  // seconds since 1970, in `_state`
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
  if (_folder.isNull()) return {ZtSendEnd::NoStore};
  if (options.transport && !options.transport->problem().empty()) return {ZtSendEnd::WrongOptions};
  const zt::FileLock lock =
      zt::Platform::current().files().lock(zt::besideReports(_folder.view(), "sending.lock"));
  if (lock.held != nullptr) return zt::StoreSender(*this, options).run();
  ZtSendResult result{lock.isBusy ? ZtSendEnd::Busy : ZtSendEnd::NoStore};
  result.left = zt::ReportStore::filesIn(std::string(_folder.view())).size();
  return result;
} catch (const std::bad_alloc&) {
  return {ZtSendEnd::NoStore};
}
