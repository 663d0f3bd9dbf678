// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/JsonFault.h"
#include "tests/support/Printing.h"
#include "ztportal/pools/ZtPortalDef.h"
#include "ztportal/portal/description/JsonValue.h"

namespace zt::test {
namespace {

template <class Result>
Result valueOf(const std::string& json, Result (JsonValue::*read)() const) {
  const Json value = parseJson(json);
  return (JsonValue(value, "/v").*read)();
}
template <class Result>
std::string faultIn(const std::string& json, Result (JsonValue::*read)() const) {
  return faultOf([&] { valueOf(json, read); });
}

TEST(JsonValueTest, ReadsIntegersOf32Bits) {
  EXPECT_EQ(valueOf("0", &JsonValue::integer), 0);
  EXPECT_EQ(valueOf("-2147483648", &JsonValue::integer), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(valueOf("2147483647", &JsonValue::integer), std::numeric_limits<std::int32_t>::max());

  constexpr const char* kRange = " is out of range (-2147483648 to 2147483647)";
  for (const char* text : {"-2147483649", "2147483648", "4294967296", "-9223372036854775808",
                           "9223372036854775808", "18446744073709551615"}) {
    EXPECT_EQ(faultIn(text, &JsonValue::integer), std::string("/v: ") + text + kRange);
  }
  for (const char* text : {"3.5", "7.0", "\"7\"", "null", "true", "[7]"}) {
    EXPECT_EQ(faultIn(text, &JsonValue::integer),
              std::string("/v: expected an integer, found ") + text);
  }
}

TEST(JsonValueTest, ReadsFloatsAndMakesTooSmallOnesZero) {
  const struct {
    const char* text;
    float number;
  } rows[] = {
      {"0", 0},
      {"-2.5", -2.5F},
      {"7", 7},
      {"1e-50", 0},
      {"-1e-400", 0},
      {"3.4028234663852886e38", std::numeric_limits<float>::max()},
      {"-3.4028234663852886e38", std::numeric_limits<float>::lowest()},
      {"18446744073709551615", 18446744073709551616.0F},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(valueOf(row.text, &JsonValue::real), row.number) << row.text;
  }
  for (const char* text : {"1e+39", "-1e+39", "1e+308"}) {
    EXPECT_EQ(faultIn(text, &JsonValue::real),
              std::string("/v: ") + text + " is out of the range of a 32-bit float");
  }
  EXPECT_EQ(faultIn("\"1\"", &JsonValue::real), "/v: expected a number, found \"1\"");
}

TEST(JsonValueTest, ReadsBooleanBytes) {
  const struct {
    const char* text;
    int byte;
  } rows[] = {{"true", 1},   {"false", 0},  {"0", 0},    {"1", 1},   {"2", 2},      {"127", 127},
              {"128", -128}, {"129", -127}, {"255", -1}, {"-1", -1}, {"-128", -128}};
  for (const auto& row : rows) {
    EXPECT_EQ(valueOf(row.text, &JsonValue::booleanByte), row.byte) << row.text;
  }
  for (const char* text : {"-129", "256"}) {
    EXPECT_EQ(faultIn(text, &JsonValue::booleanByte),
              std::string("/v: ") + text + " is out of range (-128 to 255)");
  }
  EXPECT_EQ(faultIn("null", &JsonValue::booleanByte),
            "/v: expected true, false or a number from -128 to 255, found null");
}

TEST(JsonValueTest, ReadsTimestamps) {
  const Json date = "2026-11-21T12:00:00.123456789+01:00";
  EXPECT_EQ(JsonValue(date, "/v").date(), ZtDate::fromMilliseconds(1'795'258'800'123));
  EXPECT_TRUE(JsonValue(Json(nullptr), "/v").date().isNull());
  for (const char* text :
       {"", "2026-11-21", "2026-11-21t12:00:00Z", "2026-11-21T12:00:00z", "2026-11-21T12:00:60Z",
        "2026-11-21T12:00:00.1234567890Z", "2026-11-21T12:00:00"}) {
    const Json value = text;
    EXPECT_EQ(faultOf([&] { (void)JsonValue(value, "/v").date(); }),
              "/v: expected a date such as \"2026-11-21T12:00:00.123Z\" or null, found \"" +
                  std::string(text) + "\"");
  }
}

TEST(JsonValueTest, ReadsEnumerationsAsNamesAndNumbers) {
  const struct {
    const char* text;
    std::uint64_t number;
  } rows[] = {{"\"ENTER\"", 0}, {"\"ERROR\"", 4}, {"0", 0},
              {"4", 4},         {"5", 5},         {"18446744073709551615", 18446744073709551615U}};
  for (const auto& row : rows) {
    const Json value = parseJson(row.text);
    EXPECT_EQ(JsonValue(value, "/v").enumeration(ZtPortalDef::stepTypeToString, 5), row.number)
        << row.text;
  }
  const struct {
    const char* text;
    const char* fault;
  } faults[] = {
      {"\"enter\"", "one of ENTER, LEAVE, EXIT, INFO, ERROR or a number, found \"enter\""},
      {"\"\"", "one of ENTER, LEAVE, EXIT, INFO, ERROR or a number, found \"\""},
      {"-1", "a name or an integer without a sign, found -1"},
      {"1.0", "a name or an integer without a sign, found 1.0"},
      {"null", "a name or an integer without a sign, found null"},
  };
  for (const auto& row : faults) {
    const Json value = parseJson(row.text);
    EXPECT_EQ(faultOf([&] {
                (void)JsonValue(value, "/v").enumeration(ZtPortalDef::stepTypeToString, 5);
              }),
              std::string("/v: expected ") + row.fault);
  }
}

TEST(JsonValueTest, ShowsLongValuesCutAndInAscii) {
  const Json text(std::string("ä\x1b") + std::string(100, 'x'));
  EXPECT_EQ(faultOf([&] { (void)JsonValue(text, "/v").integer(); }),
            "/v: expected an integer, found \"\\u00e4\\u001b" + std::string(47, 'x') + "...");
}

TEST(JsonValueTest, NamesNoPlaceForTheWholeDocument) {
  const Json number = 7;
  EXPECT_EQ(faultOf([&] { (void)JsonValue(number, "").list(); }), "expected a list, found 7");
}

}  // namespace
}  // namespace zt::test
