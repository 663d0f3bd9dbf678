// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/PoolWriter.h"

// The writer, with two classes of its own that have a field of every type. The tests of the pools
// compare the text of the real ones.

namespace {

using zt::PoolWriter;
using zt::test::kNoon;
using zt::test::poolText;

struct Record {
  ZtAtomic<ZtString> text;
  ZtAtomic<ZtDate> date{kNoon};
  std::int32_t number = 1;
  ZtBOOL flag = 0;
  std::uint64_t type = ZtPortalStepExit;
};
using Records = std::vector<std::shared_ptr<Record>>;

struct Sample {
  std::int32_t before = -7;
  Records records;
  std::shared_ptr<Records> sharedRecords;
  ZtAtomic<std::shared_ptr<Records>> atomicRecords;
  std::int64_t unwritten = 5;
};

const std::string kLongName(10'000, 'n');

}  // namespace

template <>
struct zt::Fields<Record> {
  static inline const std::tuple kTable{
      field("text", kLongName, &Record::text), field("date", "DATE", &Record::date),
      field("number", "NUMBER", &Record::number), field("flag", "FLAG", &Record::flag),
      field("type", "TYPE", &Record::type, kStepTypes)};
};
template <>
struct zt::Fields<Sample> {
  static constexpr std::tuple kTable{field("before", "BEFORE", &Sample::before),
                                     field("records", "RECORDS", &Sample::records),
                                     hostField("unwritten", &Sample::unwritten),
                                     field("sharedRecords", "SHARED", &Sample::sharedRecords),
                                     field("atomicRecords", "ATOMIC", &Sample::atomicRecords),
                                     FalseField{"FALSE_FIELD"}};
};

namespace {

std::shared_ptr<Record> record(const char* text) {
  auto made = std::make_shared<Record>();
  made->text.store(text);
  return made;
}

/// The outline of a record.
std::string outlined(const char* text) {
  return "  - string " + kLongName + " = " + text +
         " | string DATE = 2026-11-21T12:00:00.123UTC | integer NUMBER = 1 | boolean FLAG = FALSE"
         " | string TYPE = EXIT\n";
}

class PoolWriterTest : public zt::test::PoolsFixture {
 protected:
  /// A whole pool, its fields those of `sample`.
  static std::string written(const Sample& sample, const ZtString& prefix, bool soap) {
    std::string xml;
    PoolWriter pool(prefix, xml, soap);
    pool.begin("T", kNoon);
    pool.beginFields();
    pool.fieldsOf(sample);
    pool.endFields();
    pool.end();
    return xml;
  }
};

TEST_F(PoolWriterTest, WritesTheFieldsOfATableAndSkipsNullRecordsAndEmptyLists) {
  Sample sample;
  sample.records = {nullptr, record("first"), nullptr, record(nullptr), nullptr};
  sample.sharedRecords = std::make_shared<Records>(1, record("shared"));
  for (const bool soap : {true, false}) {
    EXPECT_EQ(
        written(sample, "   ", soap),
        poolText("T",
                 "integer BEFORE = -7\nrecords RECORDS\n" + outlined("first") + outlined("(null)") +
                     "records SHARED\n" + outlined("shared") + "boolean FALSE_FIELD = FALSE",
                 soap, 3));
  }
  sample.records.clear();
  sample.sharedRecords = std::make_shared<Records>();
  sample.atomicRecords.store(std::make_shared<Records>(1, record("atomic")));
  EXPECT_EQ(written(sample, "", false),
            poolText("T", "integer BEFORE = -7\nrecords ATOMIC\n" + outlined("atomic") +
                              "boolean FALSE_FIELD = FALSE"));
}

TEST_F(PoolWriterTest, EveryLineStartsWithThePrefix) {
  Sample sample;
  sample.records = {record("r")};
  const std::string unindented = written(sample, "", false);
  const std::string longPrefix(1000, 'x');
  const struct {
    ZtString prefix;
    std::string written;
  } rows[] = {{"\t", "\t"}, {"ab", "ab"}, {longPrefix, longPrefix}, {nullptr, "(null)"}};
  for (const auto& row : rows) {
    std::string expected;
    for (std::size_t at = 0; at < unindented.size();) {
      const std::size_t end = unindented.find('\n', at) + 1;
      expected.append(row.written).append(unindented, at, end - at);
      at = end;
    }
    EXPECT_EQ(written(sample, row.prefix, false), expected);
  }
}

// A guess from the first record's length once asked for gigabytes of memory that the text never
// had.
TEST_F(PoolWriterTest, AListReservesNoMoreThanItsMarkup) {
  const auto capacityOf = [](const Sample& sample) {
    std::string xml;
    PoolWriter("", xml, false).fieldsOf(sample);
    EXPECT_LT(xml.capacity(), 2 * xml.size() + kLongName.size());
    return xml.capacity();
  };
  Sample longFirst;
  longFirst.records.assign(100, record("short"));
  longFirst.records.front() = record(std::string(10'000'000, 'x').c_str());
  capacityOf(longFirst);
  Sample mostlyNull;
  mostlyNull.records.resize(1'000'000);
  mostlyNull.records.back() = record("only");
  EXPECT_LT(capacityOf(mostlyNull), 100'000U);
}

TEST_F(PoolWriterTest, AppendsTheLineOfAPoolWithoutFields) {
  std::string xml = "old";
  PoolWriter("\t", xml, true).noFields();
  PoolWriter("ab", xml, false).noFields();
  EXPECT_EQ(xml,
            "old\t  <Fields xsi:type=\"com_Fields\"/>\r\n"
            "ab  <Fields/>\r\n");
}

TEST_F(PoolWriterTest, GenericFieldsAreIndentedFourBlanks) {
  std::string xml;
  EXPECT_EQ(PoolWriter("", xml, true).fieldPrefix(), "    ");
  EXPECT_EQ(PoolWriter("\t", xml, false).fieldPrefix(), "\t    ");
  EXPECT_EQ(PoolWriter(nullptr, xml, false).fieldPrefix(), "(null)    ");
}

}  // namespace
