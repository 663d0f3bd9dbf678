// SPDX-License-Identifier: Apache-2.0
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

}  // namespace

// The bytes of a connection to the inbox.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using Step = zt::inbox::RequestReader::Step;
  static zt::inbox::MemoryBudget budget(zt::inbox::kLargestRequest);
  zt::inbox::MemoryBudget::Share memory(budget);
  zt::inbox::RequestReader reader(memory);
  Step step = reader.read({reinterpret_cast<const char*>(data), size});
  for (; step == Step::kHead || step == Step::kComplete; step = reader.read({})) {
    if (step == Step::kHead) continue;
    take(reader.head(), reader.request().body);
    reader.next();
  }
  return 0;
}
