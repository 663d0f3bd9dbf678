// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <utility>

#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/tools/ztreport/DescriptionGenerator.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedReport.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/portal/ZtReportDescription.h"

// A description made from a report's text renders as that text again.

namespace zt::test {
namespace {

using zt::reader::readReport;
using Description = ZtReportDescription;

/// The text of a described report with a fixed ID.
std::string rendered(const std::string& description, bool soap) {
  const auto document = Description(description).makeOffline();
  std::string text = document->generateXml(nullptr, soap);
  const std::string id(document->reportId().view());
  return text.replace(text.find(id), id.size(), "{ID}");
}

std::string describedAgain(const std::string& text) {
  return tools::describedReport(readReport(text)).text();
}

void expectRoundTrip(const std::string& description, bool soap) {
  const std::string text = rendered(description, soap);
  std::string again;
  try {
    again = describedAgain(text);
  } catch (const std::exception& error) {
    FAIL() << error.what() << "\n" << description << "\n" << text;
  }
  ASSERT_EQ(rendered(again, soap), text) << description << "\n" << again;
}

using ZoneAndLocale = std::pair<const char*, const char*>;

class RoundTripTest : public testing::TestWithParam<ZoneAndLocale> {
 private:
  ScopedEnvironment _zone{"TZ", GetParam().first};
  ScopedEnvironment _locale{"LC_ALL", GetParam().second};
};

TEST_P(RoundTripTest, ThousandsOfDescriptions) {
  constexpr int kDescriptions = 500;
  DescriptionGenerator generator(20261121);
  for (int i = 0; i < kDescriptions && !HasFatalFailure(); ++i) {
    const std::string description = generator.report().dump();
    expectRoundTrip(description, true);
    expectRoundTrip(description, false);
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, RoundTripTest,
                         testing::Values(ZoneAndLocale{"UTC", "C"},
                                         ZoneAndLocale{"Europe/Berlin", "de_DE.UTF-8"},
                                         ZoneAndLocale{"Asia/Kolkata", "en_IN.UTF-8"},
                                         ZoneAndLocale{"America/St_Johns", "en_CA.UTF-8"},
                                         ZoneAndLocale{"CET-1CEST,M3.5.0,M10.5.0/3", "C"},
                                         ZoneAndLocale{"Asia/Tehran", "fa_IR.UTF-8"}));

class RoundTripTextTest : public testing::Test {
 private:
  ScopedEnvironment _zone{"TZ", "UTC"};
  ScopedEnvironment _locale{"LC_ALL", "C"};
};

/// `depth` nested arrays around `content`.
std::string nested(int depth, const std::string& content) {
  std::string arrays;
  for (int i = 0; i < depth; ++i) arrays += R"({"name": "A", "type": "array", "fields": [)";
  arrays += content;
  for (int i = 0; i < depth; ++i) arrays += "]}";
  return R"({"pools": [{"kind": "generic", "timeStamp": null, "fields": [)" + arrays + "]}]}";
}

TEST_F(RoundTripTextTest, ArraysAsDeepAsADescriptionCanBe) {
  expectRoundTrip(nested(498, ""), true);
  expectRoundTrip(nested(497, R"({"name": "X", "type": "none"})"), true);
  const std::string tooDeep = nested(498, R"({"name": "X", "type": "none"})");
  EXPECT_THROW(Description{tooDeep}, ZtException);
}

TEST_F(RoundTripTextTest, AReportWithoutPools) {
  EXPECT_EQ(describedAgain(""), R"({"pools":[]})");
  EXPECT_EQ(Description(describedAgain("")).makeOffline()->generateXml(nullptr, true), "");
}

TEST_F(RoundTripTextTest, LineEndsOfAnXmlWriterBecomeThoseOfAReport) {
  const std::string text = rendered(
      R"({"pools": [{"kind": "execution", "steps": [{}], "fields": [{"name": "A", "type": "none"}]}]})",
      true);
  std::string withLineFeeds;
  for (const char byte : text) {
    if (byte != '\r') withLineFeeds += byte;
  }
  EXPECT_EQ(rendered(describedAgain(withLineFeeds), true), text);
}

TEST_F(RoundTripTextTest, TheInventoryOfThisMachine) {
  expectRoundTrip(R"({"pools": [{"kind": "computerSystem", "autoCheck": true}]})", true);
}

}  // namespace
}  // namespace zt::test
