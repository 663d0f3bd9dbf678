// SPDX-License-Identifier: Apache-2.0
#include "ztportal/portal/ZtReportStore.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>
#include <tuple>

#include "ztportal/base/HostSetting.h"
#include "ztportal/base/Log.h"
#include "ztportal/base/Text.h"
#include "ztportal/platform/Platform.h"
#include "ztportal/portal/ReportStore.h"

namespace {

zt::Files& files() { return zt::Platform::current().files(); }

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// The folder of the reports that cannot be sent.
std::string unsendableOf(std::string_view reports) {
  return zt::besideReports(reports, "unsendable");
}

/// The saved reports in `folder`, oldest first.
std::vector<ZtSavedReport> reportsIn(const std::string& folder) {
  std::vector<ZtSavedReport> reports;
  for (std::string& path : zt::ReportStore::filesIn(folder)) {
    std::string_view id = nameOf(path);
    id.remove_suffix(zt::kReportEnding.size());
    const zt::FileFacts facts = files().facts(path).value_or(zt::FileFacts());
    reports.push_back({std::move(path), ZtString(id), facts.bytes, facts.time});
  }
  std::sort(reports.begin(), reports.end(), [](const auto& left, const auto& right) {
    return std::tie(left.time, left.path) < std::tie(right.time, right.path);
  });
  return reports;
}

bool copied(const std::string& from, const std::string& to) {
  const std::optional<std::string> content = files().read(from, zt::kReportFileLimit);
  return content && files().writePrivate(to, *content);
}

/// Moves the file into `folder`, which is created. It gets a number there if its name is taken.
bool movedTo(const std::string& folder, const std::string& path) {
  if (!files().createPrivateFolders(folder)) return false;
  std::string_view name = nameOf(path);
  name.remove_suffix(name.ends_with(zt::kReportEnding) ? zt::kReportEnding.size() : 0);
  for (int number = 1;; ++number) {
    std::string target;
    zt::appendText(target, folder, "/", name);
    if (number > 1) zt::appendText(target, "-", std::to_string(number));
    target += zt::kReportEnding;
    if (files().move(path, target)) return true;
    if (files().exists(target)) continue;
    // The folders may be links to different file systems.
    return copied(path, target) && files().remove(path);
  }
}

/// Removes the oldest files in `folder` that exceed `limits`.
std::size_t enforce(const ZtStoreLimits& limits, const std::string& folder) {
  const std::vector<ZtSavedReport> reports = reportsIn(folder);
  std::size_t left = reports.size();
  std::uint64_t bytes = 0;
  for (const ZtSavedReport& report : reports) bytes += report.bytes;
  const auto now = std::chrono::system_clock::now();
  std::size_t count = 0;
  for (const ZtSavedReport& report : reports) {
    const bool isTooMany = limits.reports != 0 && left > limits.reports;
    const bool isTooMuch = limits.bytes != 0 && bytes > limits.bytes;
    const bool isTooOld = limits.age.count() != 0 && now - report.time > limits.age;
    if (!isTooMany && !isTooMuch && !isTooOld) break;
    --left;
    bytes -= report.bytes;
    if (zt::ReportStore::remove(report.path)) ++count;
  }
  if (count > 0) {
    zt::log(ZtLogLevel::Error, "store", std::to_string(count),
            " of the oldest reports removed for the limits from ", folder);
  }
  return count;
}

}  // namespace

std::string zt::besideReports(std::string_view reports, std::string_view name) {
  std::string path;
  if (!reports.empty()) appendText(path, reports.substr(0, reports.rfind('/') + 1), name);
  return path;
}

std::size_t zt::enforceStoreLimits(const std::string& reports) {
  const auto limits = hostSetting<ZtStoreLimits>().load();
  if (limits == nullptr) return 0;
  return enforce(*limits, reports) + enforce(*limits, unsendableOf(reports));
}

ZtString ZtSavedReport::customerId() const try {
  const std::optional<std::string> content = files().read(path, zt::kReportFileLimit);
  if (!content) return nullptr;
  // Not parsed as XML, because the file may not be well-formed behind its header.
  const std::size_t start = content->find('>', content->find("<CustomerID"));
  const std::size_t end = content->find("</CustomerID>", start);
  if (end == std::string::npos) return nullptr;
  return content->substr(start + 1, end - start - 1);
} catch (const std::bad_alloc&) {
  return nullptr;
}

std::string ZtSavedReport::problem() const try {
  std::string problem;
  zt::ReportStore::request(path, &problem);
  return problem;
} catch (const std::bad_alloc&) {
  return "not enough memory";
}

ZtReportStore::ZtReportStore() {
  if (const auto store = zt::ReportStore::open()) _folder = store->folder();
}

// Without a folder its path is empty, and an empty path names nothing.

std::vector<ZtSavedReport> ZtReportStore::list() const {
  return reportsIn(std::string(_folder.view()));
}

std::vector<ZtSavedReport> ZtReportStore::listUnsendable() const {
  return reportsIn(unsendableOf(_folder.view()));
}

bool ZtReportStore::remove(const ZtSavedReport& report) const {
  return zt::ReportStore::remove(report.path);
}

bool ZtReportStore::setAside(const ZtSavedReport& report) const {
  return movedTo(unsendableOf(_folder.view()), report.path);
}

bool ZtReportStore::putBack(const ZtSavedReport& report) const {
  return movedTo(std::string(_folder.view()), report.path);
}

bool ZtReportStore::exportTo(const ZtSavedReport& report, const std::string& path) const {
  std::string target = path;
  if (files().isFolder(path)) zt::appendText(target, "/", nameOf(report.path));
  if (!files().exists(target) && copied(report.path, target)) return true;
  zt::log(ZtLogLevel::Warning, "store", "cannot copy ", report.path, " to ", target);
  return false;
}

std::size_t ZtReportStore::removeAll() const {
  files().remove(zt::besideReports(_folder.view(), zt::kSendingState));
  std::size_t count = 0;
  for (const auto& reports : {list(), listUnsendable()}) {
    for (const ZtSavedReport& report : reports) count += remove(report) ? 1 : 0;
  }
  return count;
}

void ZtReportStore::setLimits(const ZtStoreLimits& limits) {
  const bool areAny = limits.reports != 0 || limits.bytes != 0 || limits.age.count() != 0;
  zt::hostSetting<ZtStoreLimits>().store(areAny ? std::make_shared<const ZtStoreLimits>(limits)
                                                : nullptr);
}

ZtStoreLimits ZtReportStore::limits() {
  const auto given = zt::hostSetting<ZtStoreLimits>().load();
  return given != nullptr ? *given : ZtStoreLimits();
}

std::size_t ZtReportStore::enforceLimits() const {
  return zt::enforceStoreLimits(std::string(_folder.view()));
}
