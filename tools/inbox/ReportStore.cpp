#include "tools/inbox/ReportStore.h"

#include <utility>

namespace zt::inbox {

ReportStore::Kept ReportStore::add(Report report) {
  const std::lock_guard lock(_mutex);
  report.number = ++_lastNumber;
  const auto& id = report.identity.reportId;
  if (id && !id->empty()) {
    auto& numbers = _numbersOfId[*id];
    if (!numbers.empty()) report.duplicateOf = *numbers.begin();
    numbers.insert(report.number);
  }
  auto kept = std::make_shared<const Report>(std::move(report));
  _reports.emplace(kept->number, kept);
  if (_reports.size() > _most) forget(_reports.begin());
  ++_arrivals;
  _arrived.notify_all();
  return kept;
}

std::vector<ReportStore::Kept> ReportStore::list(const ReportQuery& query) const {
  const std::lock_guard lock(_mutex);
  std::vector<Kept> found;
  auto entry = _reports.lower_bound(query.before);
  while (entry != _reports.begin() && found.size() < query.limit) {
    --entry;
    const Kept& report = entry->second;
    if (!query.customer || report->identity.customerId == query.customer) found.push_back(report);
  }
  return found;
}

ReportStore::Kept ReportStore::find(std::uint64_t number) const {
  const std::lock_guard lock(_mutex);
  const auto entry = _reports.find(number);
  return entry == _reports.end() ? nullptr : entry->second;
}

bool ReportStore::remove(std::uint64_t number) {
  const std::lock_guard lock(_mutex);
  const auto entry = _reports.find(number);
  if (entry == _reports.end()) return false;
  forget(entry);
  return true;
}

std::size_t ReportStore::clear() {
  const std::lock_guard lock(_mutex);
  const std::size_t count = _reports.size();
  _reports.clear();
  _numbersOfId.clear();
  _arrivals = 0;
  return count;
}

std::uint64_t ReportStore::arrivals() const {
  const std::lock_guard lock(_mutex);
  return _arrivals;
}

bool ReportStore::waitForArrivals(std::uint64_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock lock(_mutex);
  return _arrived.wait_for(lock, timeout, [&] { return _arrivals >= count; });
}

void ReportStore::forget(std::map<std::uint64_t, Kept>::iterator entry) {
  const Kept& report = entry->second;
  if (report->identity.reportId) {
    const auto numbers = _numbersOfId.find(*report->identity.reportId);
    if (numbers != _numbersOfId.end()) {
      numbers->second.erase(report->number);
      if (numbers->second.empty()) _numbersOfId.erase(numbers);
    }
  }
  _reports.erase(entry);
}

}  // namespace zt::inbox
