// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string>
#include <string_view>

#include "fuzz/FuzzTarget.h"
#include "tools/ztinbox/api/ReportJson.h"
#include "tools/ztinbox/http/HttpSyntax.h"
#include "tools/ztinbox/soap/ReportContent.h"
#include "tools/ztinbox/soap/SoapMessages.h"

namespace {

// Does what the inbox does with the request of a report, except for storing it.
void take(const std::string& head, const std::string& body) {
  if (zt::inbox::soapRequest(body) != zt::inbox::SoapRequest::kReport) return;
  zt::inbox::StoredReport report;
  report.identity = zt::inbox::readContent(body).identity;
  zt::inbox::reportDetailsJson(report, {head, body}, {});
}

// The requests among the bytes of a connection, received in portions of `size` bytes.
std::string requestsIn(std::string_view bytes, std::size_t size) {
  using Step = zt::inbox::RequestReader::Step;
  static zt::inbox::MemoryBudget budget(zt::inbox::kLargestRequest);
  zt::inbox::MemoryBudget::Share memory(budget);
  zt::inbox::RequestReader reader(memory);
  std::string requests;
  Step step = Step::kMore;
  for (; !bytes.empty() && step == Step::kMore; bytes.remove_prefix(std::min(size, bytes.size()))) {
    step = reader.read(bytes.substr(0, size));
    for (; step == Step::kHead || step == Step::kComplete; step = reader.read({})) {
      if (step == Step::kHead) continue;
      take(reader.head(), reader.request().body);
      requests.append(reader.head()).append(reader.request().body).append("\n");
      reader.next();
    }
  }
  return requests;
}

}  // namespace

// The bytes of a connection to the inbox. However they arrive, they are the same requests.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes = zt::fuzz::textOf(data, size);
  zt::fuzz::require(requestsIn(bytes, size) == requestsIn(bytes, 7));
  return 0;
}
