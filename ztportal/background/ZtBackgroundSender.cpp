// SPDX-License-Identifier: Apache-2.0
#include "ztportal/background/ZtBackgroundSender.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <new>
#include <random>
#include <thread>
#include <utility>

#include "ztportal/base/DescriptorIdentity.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Log.h"
#include "ztportal/platform/network/NetworkChanges.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/portal/ReportStore.h"
#include "ztportal/system/HostRules.h"
#include "ztportal/system/ZtHost.h"
#include "ztportal/system/ZtSystemInfos.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr seconds kDestructorTime{5};
constexpr milliseconds kNetworkSlice{1000};
constexpr milliseconds kAfterNetworkChange{1000};  // routes and name servers come after addresses

void warn(std::string_view message, std::string_view reason) {
  zt::log(ZtLogLevel::Warning, "background", message, reason);
}

/// The receipts that the host has not taken yet, and a pipe that has one byte in it while there are
/// some. Used inside a lock.
class ReceiptQueue {
 public:
  explicit ReceiptQueue(std::size_t limit) : _limit(limit) {
    if (limit == 0) return;
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
    _reading = zt::aboveStandardStreams(zt::FileDescriptor(ends[0]));
    _writing = zt::aboveStandardStreams(zt::FileDescriptor(ends[1]));
    _identity = zt::DescriptorIdentity(_reading.number());
  }
  ReceiptQueue(const ReceiptQueue&) = delete;
  ReceiptQueue& operator=(const ReceiptQueue&) = delete;
  ~ReceiptQueue() {
    // What the host has closed may be a descriptor of its own now.
    if (!_identity.isStill(_reading.number())) _reading.release();
    if (!_identity.isStill(_writing.number())) _writing.release();
  }

  int descriptor() const { return _reading.number(); }
  std::size_t dropped() const { return _dropped; }

  void add(ZtBackgroundReceipt receipt) {
    const bool isFirst = _receipts.empty();
    _receipts.push_back(std::move(receipt));
    if (_receipts.size() > _limit) {
      _receipts.pop_front();
      ++_dropped;
    }
    if (isFirst && _identity.isStill(_writing.number())) {
      [[maybe_unused]] const ssize_t count = ::write(_writing.number(), "", 1);
    }
  }

  std::vector<ZtBackgroundReceipt> takeAll() {
    char bytes[8];
    if (_identity.isStill(_reading.number())) {
      [[maybe_unused]] const ssize_t count = ::read(_reading.number(), bytes, sizeof(bytes));
    }
    std::vector<ZtBackgroundReceipt> taken(std::make_move_iterator(_receipts.begin()),
                                           std::make_move_iterator(_receipts.end()));
    _receipts.clear();
    return taken;
  }

 private:
  const std::size_t _limit;
  std::size_t _dropped = 0;
  std::deque<ZtBackgroundReceipt> _receipts;
  zt::FileDescriptor _reading;
  zt::FileDescriptor _writing;
  zt::DescriptorIdentity _identity;  // both ends of a pipe have the same
};

/// Reads from disk what the first report of a process needs, ICU's data above all: tens of
/// milliseconds, which would otherwise be missing in an event loop. Not on the thread of the
/// sender, because a process that is forked meanwhile could never use ICU.
void prepareFirstReport() {
  if (!zt::consentIsRevoked()) ZtSystemInfos::getSystemInfos();
  ZtPortalDef::stringFromDate(ZtDate::now());
}

std::size_t reportsInStore() { return ZtReportStore().list().size(); }

}  // namespace

/// What the host's threads and the thread of the sender share. Both sides own it, so either may end
/// first.
struct ZtBackgroundSender::State {
  explicit State(ZtBackgroundOptions given)
      : options(std::move(given)), queue(options.onReceipt ? 0 : options.keptReceipts) {}

  void start(const std::shared_ptr<State>& self);
  void run();

  // A pass is one call of ZtReportStore::send.
  enum class Pass { Complete, Incomplete, Failed, Offline };
  Pass sendAll();
  void passOn(ZtBackgroundReceipt receipt);
  void waitAfter(Pass pass, std::unique_lock<std::mutex>& lock);

  void ask(bool& isWanted, milliseconds timeout);
  bool isOnThread() const { return std::this_thread::get_id() == thread.get_id(); }
  bool shouldStop() const {
    const std::lock_guard lock(mutex);
    return isStopping;
  }

  const ZtBackgroundOptions options;
  const pid_t process = ::getpid();
  std::thread thread;

  mutable std::mutex mutex;
  std::condition_variable changed;
  std::uint64_t wanted = 1;  // passes asked for; the first is for the reports of earlier runs
  std::uint64_t done = 0;    // the last one that has ended
  bool isUrgent = false;     // a delay ends now
  bool isStopping = false;
  bool isEnded = false;
  ReceiptQueue queue;

  // Used by the thread only.
  milliseconds delay = options.retryDelay;
  seconds retryAfter{0};
  std::minstd_rand random{static_cast<unsigned>(Clock::now().time_since_epoch().count())};
  std::optional<zt::NetworkChanges> network;
};

/// The thread handles none of the host's signals. A fault in it still reaches the host's handler.
void ZtBackgroundSender::State::start(const std::shared_ptr<State>& self) {
  sigset_t blocked;
  sigset_t before;
  sigfillset(&blocked);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) {
    sigdelset(&blocked, fault);
  }
  ::pthread_sigmask(SIG_SETMASK, &blocked, &before);
  try {
    const std::lock_guard lock(mutex);  // the thread waits until `thread` is set
    thread = std::thread([self] { self->run(); });
  } catch (const std::exception& error) {
    isEnded = true;
    warn("reports are only saved, without a thread: ", error.what());
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void ZtBackgroundSender::State::run() {
  network.emplace();
  std::unique_lock lock(mutex);
  while (!isStopping) {
    const std::uint64_t number = wanted;
    isUrgent = false;
    lock.unlock();
    network->take();
    const Pass pass = sendAll();
    ZtHost::closeConnections();
    lock.lock();
    done = number;
    changed.notify_all();
    waitAfter(pass, lock);
  }
  lock.unlock();
  network.reset();
  lock.lock();
  isEnded = true;
  changed.notify_all();
}

ZtBackgroundSender::State::Pass ZtBackgroundSender::State::sendAll() try {
  Pass pass = Pass::Complete;
  ZtSendOptions sending;
  sending.configurationUrl = options.configurationUrl;
  sending.transport = options.transport;
  sending.attempts = options.attempts;
  sending.isCancelled = [this] { return shouldStop(); };
  sending.progress = [&](const ZtSavedReport& report, const ZtDelivery& delivery) {
    if (delivery.outcome == ZtDeliveryOutcome::Unreadable && zt::mayBeIncomplete(report.time)) {
      if (pass == Pass::Complete) pass = Pass::Incomplete;
      return true;
    }
    if (delivery.outcome == ZtDeliveryOutcome::Accepted) {
      delay = options.retryDelay;
    } else {
      pass = Pass::Failed;
    }
    passOn({report, delivery});
    return true;
  };
  const ZtSendResult result = ZtReportStore().send(sending);
  retryAfter = result.retryAfter;
  if (result.end == ZtSendEnd::Offline) return Pass::Offline;
  return result.end == ZtSendEnd::Done ? pass : Pass::Failed;
} catch (const std::exception& error) {
  warn("sending failed: ", error.what());
  return Pass::Failed;
}

void ZtBackgroundSender::State::passOn(ZtBackgroundReceipt receipt) {
  if (!options.onReceipt) {
    const std::lock_guard lock(mutex);
    queue.add(std::move(receipt));
    return;
  }
  try {
    options.onReceipt(receipt);
  } catch (const std::exception& error) {
    warn("the host's function for receipts threw: ", error.what());
  } catch (...) {
    warn("the host's function for receipts threw", "");
  }
}

/// Waits until the next pass should begin, or the sender stops.
void ZtBackgroundSender::State::waitAfter(Pass pass, std::unique_lock<std::mutex>& lock) {
  const auto isAsked = [&] {
    // After a failure new reports wait as well, so that a host that reports often does not try the
    // failed ones again and again.
    const bool isNews = pass == Pass::Complete || pass == Pass::Incomplete;
    return isStopping || isUrgent || (isNews && wanted != done);
  };
  if (pass == Pass::Complete) {
    delay = options.retryDelay;
    changed.wait(lock, isAsked);
    return;
  }
  std::uniform_int_distribution<milliseconds::rep> part(0, delay.count() / 2);
  auto end = Clock::now() + std::max<milliseconds>(delay - milliseconds(part(random)), retryAfter);
  delay = std::max(options.retryDelay, std::min(2 * delay, options.longestDelay));
  while (!isAsked() && Clock::now() < end) {
    if (pass != Pass::Offline) {
      changed.wait_until(lock, end, isAsked);
    } else if (!changed.wait_until(lock, std::min(end, Clock::now() + kNetworkSlice), isAsked) &&
               network->take()) {
      delay = options.retryDelay;
      end = std::min(end, Clock::now() + kAfterNetworkChange);
    }
  }
}

/// Asks for another pass at once or for the end, and waits for it.
void ZtBackgroundSender::State::ask(bool& isWanted, milliseconds timeout) {
  std::unique_lock lock(mutex);
  const std::uint64_t number = ++wanted;
  isWanted = true;
  changed.notify_all();
  if (isOnThread()) return;
  changed.wait_for(lock, timeout, [&] { return isEnded || (!isStopping && done >= number); });
}

ZtBackgroundSender::ZtBackgroundSender(ZtBackgroundOptions options)
    : _state(std::make_shared<State>(std::move(options))) {
  prepareFirstReport();
  _state->start(_state);
}

ZtBackgroundSender::~ZtBackgroundSender() {
  if (isInert()) {
    // Not even destroyed: std::thread ends a process that destroys a thread without joining it.
    static_cast<void>(new (std::nothrow) std::shared_ptr<State>(std::move(_state)));
    return;
  }
  if (!_state->shouldStop()) stop(kDestructorTime);
  if (!_state->thread.joinable()) return;
  std::unique_lock lock(_state->mutex);
  const bool isEnded = _state->isEnded;
  lock.unlock();
  if (isEnded && !_state->isOnThread()) {
    _state->thread.join();
  } else {
    _state->thread.detach();
  }
}

/// Whether this is a forked process. Its copy of the mutex may be locked for ever.
bool ZtBackgroundSender::isInert() const { return _state->process != ::getpid(); }

bool ZtBackgroundSender::send(ZtPortalData& document) {
  document.saveReport();
  if (document.lastDelivery().savedTo.empty()) return false;
  if (isInert()) return true;
  const std::lock_guard lock(_state->mutex);
  ++_state->wanted;
  _state->changed.notify_all();
  return true;
}

std::size_t ZtBackgroundSender::flush(milliseconds timeout) {
  if (!isInert() && !_state->isOnThread()) _state->ask(_state->isUrgent, timeout);
  return reportsInStore();
}

std::size_t ZtBackgroundSender::stop(milliseconds timeout) {
  if (!isInert()) _state->ask(_state->isStopping, timeout);
  return reportsInStore();
}

std::vector<ZtBackgroundReceipt> ZtBackgroundSender::receipts() {
  if (isInert()) return {};
  const std::lock_guard lock(_state->mutex);
  return _state->queue.takeAll();
}

std::size_t ZtBackgroundSender::droppedReceipts() const {
  if (isInert()) return 0;
  const std::lock_guard lock(_state->mutex);
  return _state->queue.dropped();
}

int ZtBackgroundSender::descriptor() const { return _state->queue.descriptor(); }
