// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/Filing.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

/// How long reports are collected for a transaction, unless a thread waits for them.
constexpr milliseconds kGathering{10};
/// Time until the next attempt after a failure.
constexpr milliseconds kAfterFault{1'000};
/// The memory limit of the waiting reports; reports that are being filed take as much again.
constexpr std::size_t kMostBytes = std::size_t{16} * 1024 * 1024;
/// Larger reports are filed immediately and alone, so that their sender learns that the disk is
/// full.
constexpr std::size_t kLargestGathered = std::size_t{1024} * 1024;

}  // namespace

Filing::Filing(Journal& journal, std::uint64_t lastNumber, File file)
    : _journal(journal),
      _file(std::move(file)),
      _lastKept(lastNumber),
      _lastFiled(lastNumber),
      _thread([this] { serve(); }) {}

Filing::~Filing() {
  {
    const std::lock_guard lock(_mutex);
    _ending = true;
  }
  _changed.notify_all();
  _thread.join();
}

std::uint64_t Filing::keep(IncomingReport report) {
  const std::lock_guard order(_order);
  if (report.report.size > kLargestGathered) return fileAtOnce(std::move(report));
  std::unique_lock lock(_mutex);
  _changed.wait(lock, [this] { return !isFull() || _fault; });
  if (_fault) {
    lock.unlock();
    fileAll();
    lock.lock();
  }
  report.report.number = _lastKept + 1;
  _journal.append(report);
  const std::uint64_t number = ++_lastKept;
  const bool isFirst = _kept.empty();
  _keptBytes += report.memory();
  _kept.push_back(std::move(report));
  const bool mustNotify = isFirst || isFull();
  lock.unlock();
  if (mustNotify) _changed.notify_all();
  return number;
}

std::uint64_t Filing::fileAtOnce(IncomingReport report) {
  fileAll();
  std::vector<IncomingReport> alone;
  alone.push_back(std::move(report));
  // _order is locked, so no other report is added and the thread has nothing to file.
  const std::uint64_t number = _lastKept + 1;
  alone.front().report.number = number;
  _file(alone);
  const std::lock_guard lock(_mutex);
  _lastKept = number;
  _lastFiled = number;
  return number;
}

void Filing::fileAll() {
  std::unique_lock lock(_mutex);
  const std::uint64_t number = _lastKept;
  while (_lastFiled < number) {
    const std::uint64_t failures = _failures;
    _awaited = std::max(_awaited, number);
    _changed.notify_all();
    _changed.wait(lock, [&] { return _lastFiled >= number || _failures != failures; });
    if (_lastFiled < number && _fault) std::rethrow_exception(_fault);
  }
}

void Filing::serve() {
  std::unique_lock lock(_mutex);
  while (waitForReports(lock)) filePortion(lock);
  _fault = nullptr;
  while (!isEmpty() && !_fault) filePortion(lock);
}

/// Returns false at the end.
bool Filing::waitForReports(std::unique_lock<std::mutex>& lock) {
  _changed.wait(lock, [this] { return _ending || !isEmpty(); });
  _changed.wait_for(lock, _fault ? kAfterFault : kGathering,
                    [this] { return _ending || isAwaited() || (isFull() && !_fault); });
  return !_ending;
}

void Filing::filePortion(std::unique_lock<std::mutex>& lock) {
  if (_inFiling.empty()) {
    _inFiling.swap(_kept);
    _keptBytes = 0;
    _journal.turn();
  }
  lock.unlock();
  _changed.notify_all();
  const std::uint64_t last = _inFiling.back().report.number;
  std::exception_ptr fault;
  try {
    _file(_inFiling);
    _journal.forget();
    _inFiling.clear();
  } catch (...) {
    fault = std::current_exception();
  }
  lock.lock();
  _fault = fault;
  if (fault) {
    ++_failures;
    _awaited = 0;
  } else {
    _lastFiled = last;
    if (_kept.empty()) _journal.clear();
  }
  _changed.notify_all();
}

bool Filing::isFull() const { return _keptBytes >= kMostBytes; }

}  // namespace zt::inbox
