// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/store/StoredReport.h"

#include <lz4.h>

#include <memory>
#include <utility>

#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/soap/ReportContent.h"

namespace zt::inbox {

void IncomingReport::read(std::string_view body) {
  ReportContent content = readContent(body);
  report.identity = std::move(content.identity);
  report.result = std::move(content.result);
  report.duration = content.duration;
  report.size = body.size();
  steps = std::move(content.steps);
}

std::size_t IncomingReport::memory() const {
  std::size_t bytes = sizeof(IncomingReport) + head.size() + packedBody.size();
  const ReportIdentity& identity = report.identity;
  for (const auto* value : {&identity.reportId, &identity.machineId, &identity.customerId,
                            &identity.applicationId, &identity.applicationVersion}) {
    if (*value) bytes += (*value)->size();
  }
  for (const std::string& pool : identity.pools) bytes += sizeof(std::string) + pool.size();
  for (const StepDuration& step : steps) bytes += sizeof(StepDuration) + step.name.size();
  return bytes;
}

std::string packed(std::string_view text) {
  // A request has at most 64 MiB, so its size fits an int.
  const int size = static_cast<int>(text.size());
  const int capacity = LZ4_compressBound(size);
  const auto bytes = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(capacity));
  const int count = LZ4_compress_default(text.data(), bytes.get(), size, capacity);
  return {bytes.get(), static_cast<std::size_t>(count)};
}

std::string unpacked(std::string_view bytes, std::size_t size) {
  std::string text(size, '\0');
  const int count = LZ4_decompress_safe(bytes.data(), text.data(), static_cast<int>(bytes.size()),
                                        static_cast<int>(size));
  if (count != static_cast<int>(size)) throw StoreFault("a report in the database is damaged");
  return text;
}

}  // namespace zt::inbox
