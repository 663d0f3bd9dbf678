#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "tests/unit/pools/ExpectedText.h"
#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/PoolWriter.h"

// The writer, with two classes of its own that have a field of every type. The tests of the pools
// compare the text of the real ones.

namespace {

using zt::PoolWriter;
using zt::test::ExpectedText;
using zt::test::kNoon;
using zt::test::kNoonText;

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

void expectRecord(ExpectedText& text, const char* value) {
  text.beginRecord()
      .recordField("string", kLongName, value)
      .recordField("string", "DATE", kNoonText)
      .recordField("integer", "NUMBER", "1")
      .recordField("boolean", "FLAG", "FALSE")
      .recordField("string", "TYPE", "EXIT")
      .endRecord();
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
    ExpectedText text(soap, 3);
    text.beginPool("T", kNoonText).field("integer", "BEFORE", "-7").beginArray("RECORDS");
    expectRecord(text, "first");
    expectRecord(text, "(null)");
    text.endArray().beginArray("SHARED");
    expectRecord(text, "shared");
    text.endArray().field("boolean", "FALSE_FIELD", "FALSE");
    EXPECT_EQ(written(sample, "   ", soap), text.endPool());
  }
  sample.records.clear();
  sample.sharedRecords = std::make_shared<Records>();
  sample.atomicRecords.store(std::make_shared<Records>(1, record("atomic")));
  ExpectedText text(false);
  text.beginPool("T", kNoonText).field("integer", "BEFORE", "-7").beginArray("ATOMIC");
  expectRecord(text, "atomic");
  text.endArray().field("boolean", "FALSE_FIELD", "FALSE");
  EXPECT_EQ(written(sample, "", false), text.endPool());
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
