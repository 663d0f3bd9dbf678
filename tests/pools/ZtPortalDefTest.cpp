#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"

namespace {

using namespace std::string_view_literals;
using zt::test::kEpoch;
using zt::test::kNoon;
using zt::test::lines;
using zt::test::ScopedEnvironment;

class ZtPortalDefTest : public zt::test::PoolsFixture {};

// The whole text of one plain field at column 0.
std::string plainField(const std::string& type, const std::string& name, const std::string& value) {
  return "<Field FieldType=\"" + type + "\">\r\n  <Name>" + name + "</Name>\r\n  <Value>" + value +
         "</Value>\r\n</Field>\r\n";
}

std::string plainFloat(float value) {
  std::string xml;
  ZtPortalDef::addFloatFieldToXml("", xml, "F", value, false);
  return xml;
}

float floatFromBits(std::uint32_t bits) {
  float value = 0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// --- attributes -------------------------------------------------------------------------------

TEST_F(ZtPortalDefTest, AnAttributeIsABlankAndTheTextWithSoap) {
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, "xsi:type=\"com_Field\""),
            " xsi:type=\"com_Field\"");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, "a"), " a");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, ""), " ");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(true, nullptr), " (null)");
}

TEST_F(ZtPortalDefTest, AnAttributeIsEmptyWithoutSoap) {
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, "xsi:type=\"com_Field\""), "");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, ""), "");
  EXPECT_EQ(ZtPortalDef::appendSOAPParams(false, nullptr), "");
  EXPECT_FALSE(ZtPortalDef::appendSOAPParams(false, nullptr).isNull());
}

// --- dates ------------------------------------------------------------------------------------

TEST_F(ZtPortalDefTest, AMissingDateHasNoText) {
  EXPECT_TRUE(ZtPortalDef::stringFromDate(ZtDate()).isNull());
}

TEST_F(ZtPortalDefTest, ADateIsWrittenWithMillisecondsAndZone) {
  struct Row {
    std::int64_t milliseconds;
    const char* expected;
  };
  const Row table[] = {
      {1795262400123, "2026-11-21T12:00:00.123UTC"},
      {1795262400000, "2026-11-21T12:00:00.000UTC"},
      {0, "1970-01-01T00:00:00.000UTC"},
      {-1, "1969-12-31T23:59:59.999UTC"},
      {7, "1970-01-01T00:00:00.007UTC"},
      {951782399999, "2000-02-28T23:59:59.999UTC"},
      {951782400000, "2000-02-29T00:00:00.000UTC"},
      {253402300799000, "9999-12-31T23:59:59.000UTC"},
  };
  for (const Row& row : table) {
    EXPECT_EQ(ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(row.milliseconds)), row.expected)
        << row.milliseconds;
  }
}

TEST_F(ZtPortalDefTest, NoonInGreenwichIsOneOClockInACentralEuropeanWinter) {
  const ScopedEnvironment zone("TZ", "Europe/Berlin");
  {
    const ScopedEnvironment locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(ZtPortalDef::stringFromDate(kNoon), "2026-11-21T13:00:00.123MEZ");
  }
  const ScopedEnvironment locale("LC_ALL", "en_US.UTF-8");
  EXPECT_EQ(ZtPortalDef::stringFromDate(kNoon), "2026-11-21T13:00:00.123GMT+1");
}

TEST_F(ZtPortalDefTest, TheZoneIsAskedAfreshForEveryDate) {
  EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T00:00:00.000UTC");
  {
    const ScopedEnvironment zone("TZ", "Europe/Berlin");
    const ScopedEnvironment locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T01:00:00.000MEZ");
  }
  EXPECT_EQ(ZtPortalDef::stringFromDate(kEpoch), "1970-01-01T00:00:00.000UTC");
}

// --- the four writers, whole ------------------------------------------------------------------

TEST_F(ZtPortalDefTest, WritesAStringFieldWithSoap) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("    ", xml, "Result", "OK", true);
  EXPECT_EQ(xml,
            "    <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "      <Name xsi:type=\"xsd:string\">Result</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">OK</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesAStringFieldPlainWithoutAnyAttributeButItsType) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("    ", xml, "Result", "OK", false);
  EXPECT_EQ(xml,
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>Result</Name>\r\n"
            "      <Value>OK</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesAnIntegerFieldWithSoap) {
  std::string xml;
  ZtPortalDef::addIntegerFieldToXml("  ", xml, "COUNT", 7, true);
  EXPECT_EQ(xml,
            "  <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "    <Name xsi:type=\"xsd:string\">COUNT</Name>\r\n"
            "    <Value xsi:type=\"xsd:string\">7</Value>\r\n"
            "  </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesAnIntegerFieldPlain) {
  std::string xml;
  ZtPortalDef::addIntegerFieldToXml("  ", xml, "COUNT", -7, false);
  EXPECT_EQ(xml,
            "  <Field FieldType=\"integer\">\r\n"
            "    <Name>COUNT</Name>\r\n"
            "    <Value>-7</Value>\r\n"
            "  </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesAFloatFieldWithSoap) {
  std::string xml;
  ZtPortalDef::addFloatFieldToXml("   ", xml, "RATIO", 2.5F, true);
  EXPECT_EQ(xml,
            "   <Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n"
            "     <Name xsi:type=\"xsd:string\">RATIO</Name>\r\n"
            "     <Value xsi:type=\"xsd:string\">2.50</Value>\r\n"
            "   </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesAFloatFieldPlain) {
  std::string xml;
  ZtPortalDef::addFloatFieldToXml("   ", xml, "RATIO", -2.5F, false);
  EXPECT_EQ(xml,
            "   <Field FieldType=\"float\">\r\n"
            "     <Name>RATIO</Name>\r\n"
            "     <Value>-2.50</Value>\r\n"
            "   </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesABooleanFieldWithSoap) {
  std::string xml;
  ZtPortalDef::addBOOLFieldToXml(" ", xml, "DONE", 1, true);
  EXPECT_EQ(xml,
            " <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "   <Name xsi:type=\"xsd:string\">DONE</Name>\r\n"
            "   <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            " </Field>\r\n");
}

TEST_F(ZtPortalDefTest, WritesABooleanFieldPlain) {
  std::string xml;
  ZtPortalDef::addBOOLFieldToXml(" ", xml, "DONE", 0, false);
  EXPECT_EQ(xml,
            " <Field FieldType=\"boolean\">\r\n"
            "   <Name>DONE</Name>\r\n"
            "   <Value>FALSE</Value>\r\n"
            " </Field>\r\n");
}

// --- values -----------------------------------------------------------------------------------

TEST_F(ZtPortalDefTest, WritesIntegersInDecimalDigits) {
  const std::pair<std::int32_t, const char*> table[] = {
      {0, "0"},
      {1, "1"},
      {-1, "-1"},
      {10, "10"},
      {1234567, "1234567"},
      {std::numeric_limits<std::int32_t>::max(), "2147483647"},
      {std::numeric_limits<std::int32_t>::min(), "-2147483648"},
  };
  for (const auto& [value, expected] : table) {
    std::string xml;
    ZtPortalDef::addIntegerFieldToXml("", xml, "I", value, false);
    EXPECT_EQ(xml, plainField("integer", "I", expected)) << value;
  }
}

TEST_F(ZtPortalDefTest, WritesFloatsWithTwoDigitsAfterThePoint) {
  const std::pair<float, const char*> table[] = {
      {0.0F, "0.00"},
      {-0.0F, "-0.00"},
      {2.5F, "2.50"},
      {-2.5F, "-2.50"},
      {0.004F, "0.00"},
      {0.005F, "0.00"},  // the nearest float is a little less
      {0.015F, "0.01"},
      {0.006F, "0.01"},
      {0.125F, "0.12"},  // exactly between two texts: the even one
      {0.375F, "0.38"},
      {0.625F, "0.62"},
      {-0.125F, "-0.12"},
      {2.675F, "2.67"},
      {1.005F, "1.00"},
      {0.994F, "0.99"},
      {0.995F, "1.00"},
      {-0.001F, "-0.00"},
      {-0.006F, "-0.01"},
      {99.999F, "100.00"},
      {1234567.0F, "1234567.00"},
      {16777216.0F, "16777216.00"},
      {1e10F, "10000000000.00"},
      {0.1F, "0.10"},
      {3.14159F, "3.14"},
      {std::numeric_limits<float>::max(), "340282346638528859811704183484516925440.00"},
      {std::numeric_limits<float>::lowest(), "-340282346638528859811704183484516925440.00"},
      {std::numeric_limits<float>::min(), "0.00"},
      {std::numeric_limits<float>::denorm_min(), "0.00"},
      {-std::numeric_limits<float>::denorm_min(), "-0.00"},
      {std::numeric_limits<float>::infinity(), "inf"},
      {-std::numeric_limits<float>::infinity(), "-inf"},
      {floatFromBits(0x7FC00000), "nan"},
      {floatFromBits(0xFFC00000), "-nan"},
  };
  for (const auto& [value, expected] : table) {
    EXPECT_EQ(plainFloat(value), plainField("float", "F", expected)) << value;
  }
}

TEST_F(ZtPortalDefTest, RoundsFloatsAsTheCLibraryDoes) {
  std::mt19937 random(20261121);  // NOLINT(cert-msc51-cpp): the same numbers in every run
  for (int i = 0; i < 20000; ++i) {
    const auto bits = static_cast<std::uint32_t>(random());
    // Random bits are rarely near 1, where rounding shows most, so half of them are moved there.
    const float value = i % 2 == 0 ? floatFromBits(bits)
                                   : static_cast<float>(static_cast<std::int32_t>(bits)) / 1e6F;
    char expected[64];
    std::snprintf(expected, sizeof expected, "%1.2f", static_cast<double>(value));
    ASSERT_EQ(plainFloat(value), plainField("float", "F", expected)) << "bits " << bits;
  }
}

TEST_F(ZtPortalDefTest, WritesNumbersTheSameWhateverTheLocaleOfTheProgram) {
  struct Grouping final : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  std::string xml;
  ZtPortalDef::addFloatFieldToXml("", xml, "F", 1234567.5F, false);
  ZtPortalDef::addIntegerFieldToXml("", xml, "I", 1234567, false);
  std::locale::global(before);
  EXPECT_EQ(xml, plainField("float", "F", "1234567.50") + plainField("integer", "I", "1234567"));
}

TEST_F(ZtPortalDefTest, OnlyAByteOfExactlyOneIsTrue) {
  for (int byte = -128; byte <= 127; ++byte) {
    std::string xml;
    ZtPortalDef::addBOOLFieldToXml("", xml, "B", static_cast<ZtBOOL>(byte), false);
    EXPECT_EQ(xml, plainField("boolean", "B", byte == 1 ? "TRUE" : "FALSE")) << byte;
  }
}

TEST_F(ZtPortalDefTest, TheByte255IsFalse) {
  std::string xml;
  ZtPortalDef::addBOOLFieldToXml("", xml, "B", static_cast<ZtBOOL>(255), false);
  EXPECT_EQ(xml, plainField("boolean", "B", "FALSE"));
}

// --- names, values and prefixes as they come --------------------------------------------------

TEST_F(ZtPortalDefTest, AnEmptyPrefixStartsAtTheFirstColumn) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, "N", "V", true);
  EXPECT_EQ(xml,
            "<Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "  <Name xsi:type=\"xsd:string\">N</Name>\r\n"
            "  <Value xsi:type=\"xsd:string\">V</Value>\r\n"
            "</Field>\r\n");
}

TEST_F(ZtPortalDefTest, EveryLineStartsWithThePrefixWhateverItIs) {
  struct Row {
    ZtString prefix;
    std::string written;
  };
  const Row table[] = {{"\t", "\t"},
                       {"ab", "ab"},
                       {"<&>", "<&>"},
                       {std::string(100, ' '), std::string(100, ' ')},
                       {nullptr, "(null)"}};
  for (const Row& row : table) {
    const std::string& p = row.written;
    const auto expected = [&p](const std::string& type, const std::string& value) {
      return p + "<Field FieldType=\"" + type + "\">\r\n" + p + "  <Name>N</Name>\r\n" + p +
             "  <Value>" + value + "</Value>\r\n" + p + "</Field>\r\n";
    };
    std::string xml;
    ZtPortalDef::addStringFieldToXml(row.prefix, xml, "N", "V", false);
    EXPECT_EQ(xml, expected("string", "V"));
    xml.clear();
    ZtPortalDef::addIntegerFieldToXml(row.prefix, xml, "N", 3, false);
    EXPECT_EQ(xml, expected("integer", "3"));
    xml.clear();
    ZtPortalDef::addFloatFieldToXml(row.prefix, xml, "N", 1.0F, false);
    EXPECT_EQ(xml, expected("float", "1.00"));
    xml.clear();
    ZtPortalDef::addBOOLFieldToXml(row.prefix, xml, "N", 1, false);
    EXPECT_EQ(xml, expected("boolean", "TRUE"));
  }
}

TEST_F(ZtPortalDefTest, MissingNamesAndValuesAreWrittenAsNull) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, nullptr, nullptr, false);
  EXPECT_EQ(xml, plainField("string", "(null)", "(null)"));
  xml.clear();
  ZtPortalDef::addIntegerFieldToXml("", xml, nullptr, 1, false);
  EXPECT_EQ(xml, plainField("integer", "(null)", "1"));
  xml.clear();
  ZtPortalDef::addFloatFieldToXml("", xml, nullptr, 1.0F, false);
  EXPECT_EQ(xml, plainField("float", "(null)", "1.00"));
  xml.clear();
  ZtPortalDef::addBOOLFieldToXml("", xml, nullptr, 1, false);
  EXPECT_EQ(xml, plainField("boolean", "(null)", "TRUE"));
}

TEST_F(ZtPortalDefTest, EmptyNamesAndValuesStayEmpty) {
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, "", "", false);
  EXPECT_EQ(xml, plainField("string", "", ""));
}

TEST_F(ZtPortalDefTest, NothingIsEscaped) {
  const std::string markup = "a < b && \"c\" > 'd' ]]> <!-- &amp; %@ %s %d";
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, markup, markup, false);
  EXPECT_EQ(xml, plainField("string", markup, markup));
}

TEST_F(ZtPortalDefTest, EveryByteIsWrittenAsItIs) {
  std::string bytes = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";  // a umlaut, euro sign, a smiley
  for (int byte = 0; byte <= 255; ++byte) bytes += static_cast<char>(byte);
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, bytes, bytes, false);
  EXPECT_EQ(xml, plainField("string", bytes, bytes));
}

TEST_F(ZtPortalDefTest, LongValuesAreWrittenWhole) {
  const std::string value(100'000, 'x');
  std::string xml;
  ZtPortalDef::addStringFieldToXml("", xml, "LONG", value, false);
  EXPECT_EQ(xml, plainField("string", "LONG", value));
}

TEST_F(ZtPortalDefTest, WritersLeaveTheOldText) {
  std::string xml = "old text";
  ZtPortalDef::addStringFieldToXml("", xml, "S", "V", false);
  ZtPortalDef::addIntegerFieldToXml("", xml, "I", 1, false);
  ZtPortalDef::addFloatFieldToXml("", xml, "F", 1.0F, false);
  ZtPortalDef::addBOOLFieldToXml("", xml, "B", 1, false);
  EXPECT_EQ(xml, "old text" + plainField("string", "S", "V") + plainField("integer", "I", "1") +
                     plainField("float", "F", "1.00") + plainField("boolean", "B", "TRUE"));
}

TEST_F(ZtPortalDefTest, ManyThreadsMayWriteTextsOfTheirOwn) {
  const ZtString name = "SHARED";
  const ZtString value = "value";
  std::vector<std::string> texts(4);
  std::vector<std::thread> threads;
  threads.reserve(texts.size());
  for (std::string& text : texts) {
    threads.emplace_back([&text, &name, &value] {
      for (int round = 0; round < 50; ++round) {
        ZtPortalDef::addStringFieldToXml("", text, name, value, false);
        ZtPortalDef::addStringFieldToXml("", text, name, ZtPortalDef::stringFromDate(kNoon), false);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int round = 0; round < 50; ++round) {
    expected += plainField("string", "SHARED", "value");
    expected += plainField("string", "SHARED", "2026-11-21T12:00:00.123UTC");
  }
  for (const std::string& text : texts) EXPECT_EQ(text, expected);
}

// --- step types -------------------------------------------------------------------------------

TEST_F(ZtPortalDefTest, StepTypesHaveTheirNumbersAndTexts) {
  EXPECT_EQ(std::uint64_t{ZtPortalStepEnter}, 0U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepLeave}, 1U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepExit}, 2U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepInfo}, 3U);
  EXPECT_EQ(std::uint64_t{ZtPortalStepError}, 4U);
  EXPECT_EQ(ZtPortalDef::stepTypeToString(0), "ENTER");
  EXPECT_EQ(ZtPortalDef::stepTypeToString(1), "LEAVE");
  EXPECT_EQ(ZtPortalDef::stepTypeToString(2), "EXIT");
  EXPECT_EQ(ZtPortalDef::stepTypeToString(3), "INFO");
  EXPECT_EQ(ZtPortalDef::stepTypeToString(4), "ERROR");
}

TEST_F(ZtPortalDefTest, OtherStepTypesHaveTheEmptyText) {
  const std::uint64_t table[] = {5,
                                 6,
                                 7,
                                 255,
                                 std::uint64_t{1} << 32U,
                                 (std::uint64_t{1} << 32U) + 1,
                                 std::numeric_limits<std::uint64_t>::max()};
  for (const std::uint64_t type : table) {
    EXPECT_EQ(ZtPortalDef::stepTypeToString(type), "") << type;
    EXPECT_FALSE(ZtPortalDef::stepTypeToString(type).isNull()) << type;
  }
}

}  // namespace
