#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "ztportal/base/TextAppend.h"

namespace {

using namespace std::string_view_literals;

TEST(TextAppendTest, AppendsAllPiecesInTheirOrder) {
  std::string text;
  const std::string name = "name";
  zt::appendText(text, "<", name, "> "sv, "is ", std::string("closed"), "\r\n");
  EXPECT_EQ(text, "<name> is closed\r\n");
}

TEST(TextAppendTest, LeavesTheOldText) {
  std::string text = "old\r\n";
  zt::appendText(text, "new", "er");
  EXPECT_EQ(text, "old\r\nnewer");
  zt::appendText(text, "!");
  EXPECT_EQ(text, "old\r\nnewer!");
}

TEST(TextAppendTest, EmptyPiecesAddNothing) {
  std::string text = "text";
  zt::appendText(text, "");
  EXPECT_EQ(text, "text");
  zt::appendText(text, "", "a", std::string(), "b", ""sv);
  EXPECT_EQ(text, "textab");
}

// The null pointer of such a view used to be handed to memcpy, which is undefined.
TEST(TextAppendTest, AViewWithoutAnyBytesBehindItAddsNothing) {
  std::string text = "text";
  zt::appendText(text, std::string_view(), "a", std::string_view());
  EXPECT_EQ(text, "texta");
}

TEST(TextAppendTest, KeepsEveryByte) {
  std::string text;
  zt::appendText(text, "a\0b"sv, "\xff\xfe\x80"sv, "\xc3\xa4");
  EXPECT_EQ(text, "a\0b\xff\xfe\x80\xc3\xa4"sv);
}

TEST(TextAppendTest, AppendsLongPieces) {
  const std::string piece(100'000, 'x');
  std::string text = "[";
  zt::appendText(text, piece, "|", piece, "]");
  EXPECT_EQ(text, "[" + piece + "|" + piece + "]");
}

TEST(TextAppendTest, AppendsManyTimesToOneText) {
  std::string text;
  std::string expected;
  for (int i = 0; i < 1000; ++i) {
    zt::appendText(text, "line ", std::to_string(i), "\r\n");
    expected += "line " + std::to_string(i) + "\r\n";
  }
  EXPECT_EQ(text, expected);
}

}  // namespace
