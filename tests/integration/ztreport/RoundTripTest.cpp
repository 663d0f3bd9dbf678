#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/unit/tools/ztreport/DescriptionGenerator.h"
#include "tools/common/ReportReader.h"
#include "tools/ztreport/description/DescribedReport.h"
#include "tools/ztreport/description/Description.h"

// A description that is made from a report's text renders as that text again.

namespace {

using zt::reader::readReport;
using zt::test::DescriptionGenerator;
using zt::test::Finished;
using zt::test::reportIdOf;
using zt::test::ReportProgram;
using zt::test::ScopedEnvironment;
using zt::test::withoutReportId;
using zt::tools::describedReport;
using zt::tools::Description;

/// The text of a described report, with the ID of every report.
std::string rendered(const std::string& description, bool soap) {
  const auto document = Description(description).makeOffline();
  std::string text = document->generateXml(nullptr, soap);
  const std::string id(document->reportId().view());
  return text.replace(text.find(id), id.size(), "{ID}");
}

std::string describedAgain(const std::string& text) {
  return describedReport(readReport(text)).text();
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

/// A zone and a locale.
struct Where {
  const char* zone;
  const char* locale;
};

void PrintTo(const Where& where, std::ostream* out) { *out << where.zone << " " << where.locale; }

class RoundTripTest : public testing::TestWithParam<Where> {
 private:
  ScopedEnvironment _zone{"TZ", GetParam().zone};
  ScopedEnvironment _locale{"LC_ALL", GetParam().locale};
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
                         testing::Values(Where{"UTC", "C"}, Where{"Europe/Berlin", "de_DE.UTF-8"},
                                         Where{"Asia/Kolkata", "en_IN.UTF-8"},
                                         Where{"America/St_Johns", "en_CA.UTF-8"},
                                         Where{"CET-1CEST,M3.5.0,M10.5.0/3", "C"},
                                         Where{"Asia/Tehran", "fa_IR.UTF-8"}));

class RoundTripTextTest : public testing::Test {
 private:
  ScopedEnvironment _zone{"TZ", "UTC"};
  ScopedEnvironment _locale{"LC_ALL", "C"};
};

/// Arrays in arrays, `depth` of them, the innermost with `content`.
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
  EXPECT_THROW(Description{tooDeep}, zt::JsonError) << "or more could be described";
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

TEST(RoundTripProgramTest, ThroughThePrograms) {
  constexpr int kDescriptions = 3;
  for (const char* zone : {"UTC", "Europe/Berlin", "Asia/Kolkata", "America/St_Johns"}) {
    ReportProgram program;
    program.setVariable("TZ=" + std::string(zone));
    DescriptionGenerator generator(7);
    for (int i = 0; i < kDescriptions; ++i) {
      const std::string description = program.write("description.json", generator.report().dump());
      const Finished first = program.run({"render", description});
      ASSERT_EQ(first.status, 0) << first.errors;
      const std::string text = program.write("report.txt", first.output);
      const Finished shown = program.run({"show", "--json", text});
      ASSERT_EQ(shown.status, 0) << shown.errors;
      EXPECT_EQ(shown.errors, "");
      const std::string again = program.write("again.json", shown.output);
      const Finished second = program.run({"render", "-"}, {.input = again});
      EXPECT_EQ(withoutReportId(second.output), withoutReportId(first.output));
    }
  }
}

TEST(RoundTripProgramTest, OfWhatTheInventoryFinds) {
  ReportProgram program;
  const std::string description = program.write(
      "description.json", R"({"pools": [{"kind": "computerSystem", "autoCheck": true}]})");
  const std::string text = program.write("report.txt", program.run({"render", description}).output);
  const std::string again =
      program.write("again.json", program.run({"show", text, "--json"}).output);
  EXPECT_EQ(withoutReportId(program.run({"render", again}).output),
            withoutReportId(zt::test::contentOf(text)));
}

}  // namespace
