// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/ReportStore.h"

#include <algorithm>
#include <utility>

namespace zt::inbox {

namespace {

/// How many reports are removed or marked at a time; senders wait meanwhile.
constexpr std::size_t kChangePortion = 200;
constexpr std::chrono::seconds kIndexingPatience{2};

}  // namespace

ReportStore::ReportStore(std::unique_ptr<Backend> backend, std::size_t most, Listener listener)
    : _backend(std::move(backend)),
      _most(most),
      _listener(std::move(listener)),
      _commits({.transact = [this](const std::function<void()>& work) { transact(work); },
                .committed = [this] { tellStored(); },
                .background = [this] { return _backend->indexPortion(); },
                .settled = [this] { _backend->settle(); }}) {
  _arrivals.add(_backend->lastNumber());
  _arrivals.clear();
  _backend->follow(_arrivals);
  trim();
}

void ReportStore::transact(const std::function<void()>& work) {
  _backend->transact([&] {
    _inserted.clear();
    work();
    if (!_inserted.empty()) _backend->insert(_inserted, _most);
  });
}

std::future<void> ReportStore::add(IncomingReport incoming) {
  const auto report = std::make_shared<IncomingReport>(std::move(incoming));
  return _commits.add({[this, report] { _inserted.push_back(report.get()); },
                       [this, report] {
                         _arrivals.add(report->report.number);
                         _stored.push_back(std::move(*report));
                       }});
}

void ReportStore::tellStored() {
  if (_listener && !_stored.empty()) _listener(_stored);
  _stored.clear();
}

std::vector<StoredReport> ReportStore::list(const ReportFilter& wanted, std::size_t limit) {
  if (wanted.text) indexUpTo(_arrivals.lastNumber());
  return _backend->list(wanted, limit);
}

std::optional<StoredReport> ReportStore::find(std::uint64_t number) {
  if (number == 0) return std::nullopt;
  auto reports = listAfter(number - 1, 1);
  if (reports.empty() || reports.front().number != number) return std::nullopt;
  return std::move(reports.front());
}

Statistics ReportStore::statistics(const ReportFilter& filter) {
  if (filter.text) indexUpTo(_arrivals.lastNumber());
  return _backend->statistics(filter);
}

/// Changes this report.
bool ReportStore::changeOne(std::uint64_t number, const Change& change) {
  const bool isChanged = changeEach({number}, change) > 0;
  if (isChanged) _arrivals.addChange();
  return isChanged;
}

/// Changes these reports in one transaction. Returns how many `change` has changed.
std::size_t ReportStore::changeEach(const std::vector<std::uint64_t>& numbers,
                                    const Change& change) {
  std::size_t changed = 0;
  _commits.run({[&] {
                  changed = 0;
                  for (const std::uint64_t number : numbers) changed += change(number) ? 1 : 0;
                },
                {}});
  return changed;
}

/// Changes the selected reports in portions.
std::size_t ReportStore::changeAll(ReportFilter filter, const Change& change) {
  if (filter.text) indexUpTo(_arrivals.lastNumber());
  std::size_t total = 0;
  for (auto found = _backend->numbers(filter, kChangePortion); !found.empty();
       found = _backend->numbers(filter, kChangePortion)) {
    total += changeEach(found, change);
    filter.before = found.back();
  }
  if (total > 0) _arrivals.addChange();
  return total;
}

bool ReportStore::remove(std::uint64_t number) {
  return changeOne(number, [this](std::uint64_t each) { return _backend->remove(each); });
}

std::size_t ReportStore::remove(const ReportFilter& filter) {
  ReportFilter present = filter;
  const std::uint64_t next = _arrivals.lastNumber() + 1;
  present.before = std::min(filter.before.value_or(next), next);
  return changeAll(present, [this](std::uint64_t number) { return _backend->remove(number); });
}

std::size_t ReportStore::clear() {
  std::size_t cleared = 0;
  _commits.run({[this, &cleared] { cleared = _backend->removeAll(); },
                [this] {
                  _arrivals.clear();
                  _backend->shrink();
                }});
  if (cleared > 0) _arrivals.addChange();
  return cleared;
}

bool ReportStore::setRead(std::uint64_t number, bool read) {
  return changeOne(number,
                   [this, read](std::uint64_t each) { return _backend->setRead(each, read); });
}

std::size_t ReportStore::setRead(ReportFilter filter, bool read) {
  filter.read = !read;
  return changeAll(std::move(filter),
                   [this, read](std::uint64_t number) { return _backend->setRead(number, read); });
}

/// Removes the reports beyond the limit, which an earlier run with a higher limit left. Does so in
/// portions, so that new reports can be stored in between.
void ReportStore::trim() {
  const auto more = std::make_shared<bool>(false);
  _commits.add({[this, more] { *more = _backend->trim(_most); },
                [this, more] {
                  if (*more && !_commits.isEnding()) trim();
                }});
}

void ReportStore::indexUpTo(std::uint64_t number) {
  const auto end = std::chrono::steady_clock::now() + kIndexingPatience;
  while (!_backend->isIndexed(number) && std::chrono::steady_clock::now() < end) {
    _commits.run({[this] { _backend->indexPortion(); }, {}});
  }
}

}  // namespace zt::inbox
