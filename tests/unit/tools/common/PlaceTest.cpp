#include <gtest/gtest.h>

#include "tools/common/ReportReader.h"

namespace {

using zt::reader::Place;
using zt::reader::placeIn;
using zt::reader::ReadError;

TEST(PlaceTest, CountsLinesByLineFeedsAndColumnsByBytes) {
  const struct {
    const char* text;
    std::size_t offset;
    Place place;
  } rows[] = {
      {"", 0, {1, 1}},          {"", 7, {1, 1}},       {"abc", 0, {1, 1}},  {"abc", 2, {1, 3}},
      {"abc", 3, {1, 4}},       {"abc", 99, {1, 4}},   {"a\nb", 1, {1, 2}}, {"a\nb", 2, {2, 1}},
      {"a\r\nb", 2, {1, 3}},    {"a\r\nb", 3, {2, 1}}, {"a\rb", 2, {1, 3}}, {"\n\n\n", 3, {4, 1}},
      {"\xc3\xa4x", 2, {1, 3}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(placeIn(row.text, row.offset), row.place) << row.text << " " << row.offset;
  }
}

TEST(PlaceTest, AnErrorTellsItsPlaceAndReason) {
  const ReadError error({12, 7}, "expected more");
  EXPECT_STREQ(error.what(), "line 12, column 7: expected more");
  EXPECT_EQ(error.place(), (Place{12, 7}));
}

}  // namespace
