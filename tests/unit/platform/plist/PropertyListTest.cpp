// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "ztportal/platform/plist/PropertyList.h"

namespace {

using std::string_literals::operator""s;
using std::string_view_literals::operator""sv;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string xmlList(std::string_view content) {
  std::string list =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
      "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\">\n";
  list += content;
  return list += "\n</plist>\n";
}

/// A binary property list of these objects; the first one is the top-level object. Offsets have
/// four bytes, references one.
std::string binaryList(const std::vector<std::string>& objects) {
  std::string list = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += "\0\0"s + static_cast<char>(list.size() >> 8U) + static_cast<char>(list.size());
    list += object;
  }
  const std::size_t position = list.size();
  list += table;
  list += "\0\0\0\0\0\0\4\1"s;
  list += "\0\0\0\0\0\0\0"s + static_cast<char>(objects.size());
  list += std::string(8, '\0');
  list += "\0\0\0\0\0\0"s + static_cast<char>(position >> 8U) + static_cast<char>(position);
  return list;
}

TEST(PropertyList, ReadsTheStringsOfAnXmlDictionary) {
  const auto strings =
      zt::parsePropertyList(xmlList("<dict>\n"
                                    "  <key>CFBundleName</key>\n  <string>Setup</string>\n"
                                    "  <key>Copyright</key><string>\xC2\xA9 Br\xC3\xBC"
                                    "der &amp; &#83;&#246;hne</string>\n"
                                    "  <key>Empty</key><string></string>\n"
                                    "</dict>"));
  ASSERT_TRUE(strings);
  EXPECT_THAT(*strings, ElementsAre(Pair("CFBundleName", "Setup"),
                                    Pair("Copyright",
                                         "\xC2\xA9 Br\xC3\xBC"
                                         "der & S\xC3\xB6hne"),
                                    Pair("Empty", "")));
}

TEST(PropertyList, OtherXmlValuesAreMissing) {
  const auto strings = zt::parsePropertyList(xmlList(
      "<dict><key>a</key><integer>3</integer><key>b</key><true/>"
      "<key>c</key><array><string>x</string></array>"
      "<key>d</key><dict><key>inner</key><string>x</string></dict>"
      "<key>e</key><real>1.5</real><key>f</key><data>QUJD</data>"
      "<key>g</key><date>2026-11-21T12:00:00Z</date><key>h</key><string>y</string></dict>"));
  ASSERT_TRUE(strings);
  EXPECT_THAT(*strings, ElementsAre(Pair("a", nullptr), Pair("b", nullptr), Pair("c", nullptr),
                                    Pair("d", nullptr), Pair("e", nullptr), Pair("f", nullptr),
                                    Pair("g", nullptr), Pair("h", "y")));
}

TEST(PropertyList, ReadsTheStringsOfABinaryDictionary) {
  // {"Name": "Setup", "Umlaut": "ä" in UTF-16, "n": 3, "same": "Setup"}
  const std::string list =
      binaryList({"\xD4\1\2\3\4\5\6\7\5"s, "\x54Name"s, "\x56Umlaut"s, "\x51n"s, "\x54same"s,
                  "\x55Setup"s, "\x61\0\xE4"s, "\x10\3"s});
  const auto strings = zt::parsePropertyList(list);
  ASSERT_TRUE(strings);
  EXPECT_THAT(*strings, ElementsAre(Pair("Name", "Setup"), Pair("Umlaut", "\xC3\xA4"),
                                    Pair("n", nullptr), Pair("same", "Setup")));
}

TEST(PropertyList, ReadsAnEmptyDictionary) {
  for (const std::string& list :
       {xmlList("<dict/>"), xmlList("<dict></dict>"), binaryList({"\xD0"})}) {
    const auto strings = zt::parsePropertyList(list);
    ASSERT_TRUE(strings) << list;
    EXPECT_THAT(*strings, IsEmpty()) << list;
  }
}

TEST(PropertyList, AStringThatIsNotUtf8IsMissing) {
  const auto strings = zt::parsePropertyList(binaryList({"\xD1\1\2"s, "\x51k"s, "\x52\xFF\xC0"s}));
  ASSERT_TRUE(strings);
  EXPECT_THAT(*strings, ElementsAre(Pair("k", nullptr)));
}

TEST(PropertyList, RefusesEverythingButADictionary) {
  for (const std::string& data :
       {""s, "x"s, "hello"s, "<html/>"s, "<plist/>"s, "<dict/>"s, "{\"a\": \"b\"}"s, "{ a = b; }"s,
        "bplist"s, "bplist00"s, "bplist00"s + std::string(40, '\0'),
        "bplist00"s + std::string(40, '\xFF')}) {
    EXPECT_FALSE(zt::parsePropertyList(data)) << data;
  }
  for (const std::string& data :
       {"<dict><key>a</key><string>b</string></dict>"s, xmlList(""), xmlList("<array/>"),
        xmlList("<string>x</string>"), xmlList("<dict>"), xmlList("<dict><key>a</dict>"),
        xmlList("<dict><key>a</key><string>&unknown;</string></dict>"), binaryList({"\xA0"}),
        binaryList({"\x51x"}), std::string(1000, '\0')}) {
    EXPECT_FALSE(zt::parsePropertyList(data)) << data;
  }
}

TEST(PropertyList, RefusesEveryTruncatedList) {
  const std::string xml = xmlList("<dict><key>a</key><string>b</string></dict>");
  const std::string binary = binaryList({"\xD1\1\2"s, "\x51k"s, "\x51v"s});
  ASSERT_TRUE(zt::parsePropertyList(xml));
  ASSERT_TRUE(zt::parsePropertyList(binary));
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  // The last byte of the XML form is a line end.
  for (std::size_t length = 0; length < xml.size() - 1; ++length) {
    EXPECT_FALSE(zt::parsePropertyList(std::string(xml, 0, length))) << length;
  }
  for (std::size_t length = 0; length < binary.size(); ++length) {
    EXPECT_FALSE(zt::parsePropertyList(std::string(binary, 0, length))) << length;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(PropertyList, SurvivesAnyWrongByteInABinaryList) {
  const std::string binary = binaryList({"\xD2\1\2\3\4"s, "\x51k"s, "\x51l"s, "\x51v"s, "\xA1\3"s});
  ASSERT_TRUE(zt::parsePropertyList(binary));
  for (std::size_t position = 0; position < binary.size(); ++position) {
    for (int value = 0; value < 256; ++value) {
      std::string wrong = binary;
      wrong[position] = static_cast<char>(value);
      const auto strings = zt::parsePropertyList(wrong);
      EXPECT_TRUE(!strings || strings->size() <= 2) << position << ' ' << value;
    }
  }
}

TEST(PropertyList, RefusesContainersThatContainEachOtherRepeatedly) {
  // A dictionary that contains itself; and 30 arrays that each contain the next one twice, which is
  // a thousand million copies.
  EXPECT_FALSE(zt::parsePropertyList(binaryList({"\xD1\1\0"s, "\x51k"s})));
  std::vector<std::string> objects = {"\xD1\1\2"s, "\x51k"s};
  for (char next = 3; next < 33; ++next) objects.push_back("\xA2"s + next + next);
  objects.push_back("\xA0"s);
  EXPECT_FALSE(zt::parsePropertyList(binaryList(objects)));
}

// A UTF-16 key with a NUL character ended the host's process: libplist asserts that there is none.
TEST(PropertyList, RefusesAKeyWithANulCharacter) {
  for (const std::string& key :
       {"\x52k\0"s, "\x52\0k"s, "\x51\0"s, "\x5F\x10\2k\0"s, "\x62\0k\0\0"s, "\x61\0\0"s}) {
    EXPECT_FALSE(zt::parsePropertyList(binaryList({"\xD1\1\2"s, key, "\x51v"s})));
    EXPECT_FALSE(
        zt::parsePropertyList(binaryList({"\xD1\1\2"s, "\x51k"s, "\xD1\3\4"s, key, "\x51v"s})));
  }
  const auto strings = zt::parsePropertyList(
      binaryList({"\xD2\1\2\3\4"s, "\x62\0k\1\0"s, "\x50"s, "\x51v"s, "\x51w"s}));
  ASSERT_TRUE(strings);
  EXPECT_THAT(*strings, ElementsAre(Pair("", "w"), Pair("k\xC4\x80", "v")));
}

// A long string that is referenced many times was copied each time, so a file of 1 MiB could
// exhaust the memory of the machine.
TEST(PropertyList, RefusesAStringThatIsReferencedTooOften) {
  const auto shared = [](unsigned char length, int places) {
    const std::string text = "\x5F\x11"s + static_cast<char>(length) + '\0' +
                             std::string(std::size_t{length} * 256, 'x');
    const std::string array = "\xAF\x11"s + static_cast<char>(places >> 8) +
                              static_cast<char>(places) +
                              std::string(static_cast<std::size_t>(places), '\3');
    return binaryList({"\xD1\1\2"s, "\x51k"s, array, text});
  };
  EXPECT_TRUE(zt::parsePropertyList(shared(100, 30)));
  EXPECT_FALSE(zt::parsePropertyList(shared(100, 30'000)));
}

TEST(PropertyList, RefusesContainersThatAreNestedTooDeeply) {
  const auto nested = [](int depth) {
    std::string list = "<dict><key>a</key>";
    for (int i = 0; i < depth; ++i) list += "<array>";
    for (int i = 0; i < depth; ++i) list += "</array>";
    return xmlList(list + "</dict>");
  };
  EXPECT_TRUE(zt::parsePropertyList(nested(100)));
  EXPECT_FALSE(zt::parsePropertyList(nested(50'000)));
}

TEST(PropertyList, LoadsNothingThatTheListNames) {
  EXPECT_FALSE(
      zt::parsePropertyList("<!DOCTYPE plist [<!ENTITY e SYSTEM \"/etc/hostname\">]>"
                            "<plist><dict><key>a</key><string>&e;</string></dict></plist>"sv));
}

}  // namespace
