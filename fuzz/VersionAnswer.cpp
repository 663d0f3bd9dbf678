// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FuzzTarget.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/portal/ZtPortalData.h"

// The response of a reporting server to a version request.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static zt::test::FakePlatform platform;
  platform.http_.asked.clear();
  platform.http_.answer = [&](const auto& asked) {
    const std::string_view configuration = "<c><defSOAP>http://report.test/</defSOAP></c>";
    return zt::HttpResponse{200,
                            std::string(asked.body ? zt::fuzz::textOf(data, size) : configuration)};
  };
  const auto document = ZtPortalData::initWithValues("http://config.test/", false, "", "", "");
  zt::fuzz::require(document->gotConfiguration());
  zt::fuzz::require(document->online() == !document->serverVersion().empty());
  return 0;
}
