// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <utility>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/ZtPortalDef.h"

// The writers of single fields. Other tests of pools need not repeat how values are written.

namespace {

class ZtPortalDefWritersTest : public zt::test::PoolsFixture {
 protected:
  static std::string stringField(const ZtString& name, const ZtString& value) {
    std::string xml;
    ZtPortalDef::addStringFieldToXml("", xml, name, value, false);
    return xml;
  }
  static std::string floatField(float value) {
    std::string xml;
    ZtPortalDef::addFloatFieldToXml("", xml, "F", value, false);
    return xml;
  }
  /// The four kinds of fields with these names and prefixes.
  static std::string allFields(const ZtString& prefix, const ZtString& name) {
    std::string xml;
    ZtPortalDef::addStringFieldToXml(prefix, xml, name, "V", false);
    ZtPortalDef::addIntegerFieldToXml(prefix, xml, name, 3, false);
    ZtPortalDef::addFloatFieldToXml(prefix, xml, name, 1.0F, false);
    ZtPortalDef::addBOOLFieldToXml(prefix, xml, name, 1, false);
    return xml;
  }

  /// The plain text of one field.
  static std::string plain(const std::string& type, const std::string& name,
                           const std::string& value, const std::string& prefix = "") {
    return prefix + "<Field FieldType=\"" + type + "\">\r\n" + prefix + "  <Name>" + name +
           "</Name>\r\n" + prefix + "  <Value>" + value + "</Value>\r\n" + prefix + "</Field>\r\n";
  }
  static std::string allPlain(const std::string& prefix, const std::string& name) {
    return plain("string", name, "V", prefix) + plain("integer", name, "3", prefix) +
           plain("float", name, "1.00", prefix) + plain("boolean", name, "TRUE", prefix);
  }

  static float floatFromBits(std::uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
  }
};

TEST_F(ZtPortalDefWritersTest, WritesFieldsOfEveryTypeWithSoap) {
  std::string xml = "old";
  ZtPortalDef::addStringFieldToXml("    ", xml, "Result", "OK", true);
  ZtPortalDef::addIntegerFieldToXml("  ", xml, "COUNT", 7, true);
  ZtPortalDef::addFloatFieldToXml("   ", xml, "RATIO", 2.5F, true);
  ZtPortalDef::addBOOLFieldToXml("", xml, "DONE", 1, true);
  EXPECT_EQ(xml,
            "old    <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "      <Name xsi:type=\"xsd:string\">Result</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">OK</Value>\r\n"
            "    </Field>\r\n"
            "  <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "    <Name xsi:type=\"xsd:string\">COUNT</Name>\r\n"
            "    <Value xsi:type=\"xsd:string\">7</Value>\r\n"
            "  </Field>\r\n"
            "   <Field xsi:type=\"com_Field\" FieldType=\"float\">\r\n"
            "     <Name xsi:type=\"xsd:string\">RATIO</Name>\r\n"
            "     <Value xsi:type=\"xsd:string\">2.50</Value>\r\n"
            "   </Field>\r\n"
            "<Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "  <Name xsi:type=\"xsd:string\">DONE</Name>\r\n"
            "  <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "</Field>\r\n");
}

TEST_F(ZtPortalDefWritersTest, WritesFieldsPlainWithoutAnyAttributeButTheirType) {
  std::string xml = "old";
  ZtPortalDef::addStringFieldToXml("    ", xml, "Result", "OK", false);
  EXPECT_EQ(xml,
            "old    <Field FieldType=\"string\">\r\n"
            "      <Name>Result</Name>\r\n"
            "      <Value>OK</Value>\r\n"
            "    </Field>\r\n");
  EXPECT_EQ(allFields("", "N"), allPlain("", "N"));
}

TEST_F(ZtPortalDefWritersTest, WritesIntegersInDecimalDigits) {
  const std::pair<std::int32_t, const char*> table[] = {
      {0, "0"},
      {1, "1"},
      {-1, "-1"},
      {std::numeric_limits<std::int32_t>::max(), "2147483647"},
      {std::numeric_limits<std::int32_t>::min(), "-2147483648"},
  };
  for (const auto& [value, expected] : table) {
    std::string xml;
    ZtPortalDef::addIntegerFieldToXml("", xml, "I", value, false);
    EXPECT_EQ(xml, plain("integer", "I", expected)) << value;
  }
}

TEST_F(ZtPortalDefWritersTest, WritesFloatsWithTwoDigitsAfterThePoint) {
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
    EXPECT_EQ(floatField(value), plain("float", "F", expected)) << value;
  }
}

TEST_F(ZtPortalDefWritersTest, RoundsFloatsAsTheCLibraryDoes) {
  std::mt19937 random(20261121);  // NOLINT(cert-msc51-cpp): the same numbers in every run
  for (int i = 0; i < 20000; ++i) {
    const auto bits = static_cast<std::uint32_t>(random());
    // Random bits are rarely near 1, where rounding shows most, so half of them are moved there.
    const float value = i % 2 == 0 ? floatFromBits(bits)
                                   : static_cast<float>(static_cast<std::int32_t>(bits)) / 1e6F;
    char expected[64];
    std::snprintf(expected, sizeof expected, "%1.2f", static_cast<double>(value));
    ASSERT_EQ(floatField(value), plain("float", "F", expected)) << "bits " << bits;
  }
}

TEST_F(ZtPortalDefWritersTest, WritesNumbersTheSameInEveryLocaleOfTheProgram) {
  struct Grouping final : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouping));
  std::string xml = floatField(1234567.5F);
  ZtPortalDef::addIntegerFieldToXml("", xml, "I", 1234567, false);
  std::locale::global(before);
  EXPECT_EQ(xml, plain("float", "F", "1234567.50") + plain("integer", "I", "1234567"));
}

TEST_F(ZtPortalDefWritersTest, OnlyAByteOfExactlyOneIsTrue) {
  for (int byte = -128; byte <= 255; ++byte) {
    std::string xml;
    ZtPortalDef::addBOOLFieldToXml("", xml, "B", static_cast<ZtBOOL>(byte), false);
    EXPECT_EQ(xml, plain("boolean", "B", byte == 1 ? "TRUE" : "FALSE")) << byte;
  }
}

TEST_F(ZtPortalDefWritersTest, EveryLineStartsWithThePrefix) {
  const std::string blanks(100, ' ');
  for (const std::string& prefix :
       {std::string("\t"), std::string("ab"), std::string("<&>"), blanks}) {
    EXPECT_EQ(allFields(prefix, "N"), allPlain(prefix, "N"));
  }
  EXPECT_EQ(allFields(nullptr, "N"), allPlain("(null)", "N"));
}

TEST_F(ZtPortalDefWritersTest, MissingNamesAndValuesAreWrittenAsNullAndEmptyOnesStayEmpty) {
  EXPECT_EQ(allFields("", nullptr), allPlain("", "(null)"));
  EXPECT_EQ(stringField(nullptr, nullptr), plain("string", "(null)", "(null)"));
  EXPECT_EQ(stringField("", ""), plain("string", "", ""));
}

TEST_F(ZtPortalDefWritersTest, NamesAndValuesAreWrittenByteForByte) {
  std::string bytes = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";  // a umlaut, euro sign, a smiley
  for (int byte = 0; byte <= 255; ++byte) bytes += static_cast<char>(byte);
  for (const std::string& text : {std::string("a < b && \"c\" > 'd' ]]> <!-- &amp; %@ %s %d"),
                                  bytes, std::string(100'000, 'x')}) {
    EXPECT_EQ(stringField(text, text), plain("string", text, text));
  }
}

}  // namespace
