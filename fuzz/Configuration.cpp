// SPDX-License-Identifier: Apache-2.0
#include "fuzz/FuzzTarget.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/portal/ZtPortalData.h"

// The configuration document of a customer.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static zt::test::FakePlatform platform;
  platform.http_.asked.clear();
  platform.http_.answer = [&](const auto&) {
    return zt::HttpResponse{200, std::string(zt::fuzz::textOf(data, size))};
  };
  const auto document = ZtPortalData::initWithValues("http://config.test/", false, "", "", "");
  zt::fuzz::require(document->gotConfiguration() == !document->reportUrl().empty());
  zt::fuzz::require(platform.http_.asked.size() == (document->gotConfiguration() ? 2U : 1U));
  return 0;
}
