#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/unit/pools/PoolsFixture.h"
#include "ztportal/pools/PoolWriter.h"

namespace {

using zt::PoolWriter;
using zt::test::kNoon;

ZtAtomic<ZtString> property(const char* value) { return ZtAtomic<ZtString>(ZtString(value)); }
const ZtAtomic<ZtDate> kNoonProperty{kNoon};
const ZtAtomic<ZtDate> kNoDate;

/// Writes a field of every kind.
struct Record {
  void addFieldsTo(PoolWriter& record) const {
    record.string("NAME", name);
    record.date("DATE", kNoonProperty);
    record.integer("INTEGER", 1);
    record.boolean("BOOLEAN", 0);
  }
  const char* name;
};
using Records = std::vector<std::shared_ptr<Record>>;

/// Writes one string.
struct ShortRecord {
  void addFieldsTo(PoolWriter& record) const { record.string(field, value); }
  std::string_view field;
  std::string_view value;
};
using ShortRecords = std::vector<std::shared_ptr<ShortRecord>>;

class PoolWriterTest : public zt::test::PoolsFixture {
 protected:
  std::string _xml = "old";
};

TEST_F(PoolWriterTest, WritesNothingByItself) {
  const PoolWriter pool("  ", _xml, true);
  EXPECT_EQ(_xml, "old");
}

TEST_F(PoolWriterTest, WritesTheFrameOfAPoolWithSoap) {
  PoolWriter pool("  ", _xml, true);
  pool.begin("TYPE", kNoon);
  pool.beginFields();
  pool.endFields();
  pool.end();
  EXPECT_EQ(_xml,
            "old  <Data xsi:type=\"com_Pool\" Pool=\"TYPE\">\r\n"
            "    <Date xsi:type=\"xsd:dateTime\">2026-11-21T12:00:00.123UTC</Date>\r\n"
            "    <Fields xsi:type=\"com_Fields\">\r\n"
            "    </Fields>\r\n"
            "  </Data>\r\n");
}

TEST_F(PoolWriterTest, WritesTheFrameOfAPoolPlain) {
  PoolWriter pool("  ", _xml, false);
  pool.begin("TYPE", kNoon);
  pool.beginFields();
  pool.endFields();
  pool.end();
  EXPECT_EQ(_xml,
            "old  <Data Pool=\"TYPE\">\r\n"
            "    <Date>2026-11-21T12:00:00.123UTC</Date>\r\n"
            "    <Fields>\r\n"
            "    </Fields>\r\n"
            "  </Data>\r\n");
}

TEST_F(PoolWriterTest, WritesThePoolWithoutFieldsInOneLine) {
  PoolWriter soap("\t", _xml, true);
  soap.noFields();
  PoolWriter plain("ab", _xml, false);
  plain.noFields();
  EXPECT_EQ(_xml,
            "old\t  <Fields xsi:type=\"com_Fields\"/>\r\n"
            "ab  <Fields/>\r\n");
}

TEST_F(PoolWriterTest, WritesAMissingTypeAndDateAsNull) {
  PoolWriter pool("", _xml, false);
  pool.begin(nullptr, ZtDate());
  EXPECT_EQ(_xml,
            "old<Data Pool=\"(null)\">\r\n"
            "  <Date>(null)</Date>\r\n");
}

TEST_F(PoolWriterTest, WritesFieldsOfEveryKindFourBlanksDeeperWithSoap) {
  PoolWriter pool(" ", _xml, true);
  pool.string("S", property("text"));
  pool.date("D", kNoonProperty);
  pool.integer("I", std::numeric_limits<std::int32_t>::min());
  pool.boolean("B", 1);
  EXPECT_EQ(_xml,
            "old     <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "       <Name xsi:type=\"xsd:string\">S</Name>\r\n"
            "       <Value xsi:type=\"xsd:string\">text</Value>\r\n"
            "     </Field>\r\n"
            "     <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "       <Name xsi:type=\"xsd:string\">D</Name>\r\n"
            "       <Value xsi:type=\"xsd:string\">2026-11-21T12:00:00.123UTC</Value>\r\n"
            "     </Field>\r\n"
            "     <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "       <Name xsi:type=\"xsd:string\">I</Name>\r\n"
            "       <Value xsi:type=\"xsd:string\">-2147483648</Value>\r\n"
            "     </Field>\r\n"
            "     <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "       <Name xsi:type=\"xsd:string\">B</Name>\r\n"
            "       <Value xsi:type=\"xsd:string\">TRUE</Value>\r\n"
            "     </Field>\r\n");
}

TEST_F(PoolWriterTest, WritesFieldsOfEveryKindFourBlanksDeeperPlain) {
  PoolWriter pool("", _xml, false);
  pool.string("S", std::string_view("text"));
  pool.string("N", property(nullptr));
  pool.date("D", kNoDate);
  pool.integer("I", 7);
  pool.boolean("B", 2);
  EXPECT_EQ(_xml,
            "old    <Field FieldType=\"string\">\r\n"
            "      <Name>S</Name>\r\n"
            "      <Value>text</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>N</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"string\">\r\n"
            "      <Name>D</Name>\r\n"
            "      <Value>(null)</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"integer\">\r\n"
            "      <Name>I</Name>\r\n"
            "      <Value>7</Value>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"boolean\">\r\n"
            "      <Name>B</Name>\r\n"
            "      <Value>FALSE</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(PoolWriterTest, WritesRecordsAsGroupsWithDeeperFieldsAndGoesOnAtTheOldDepth) {
  PoolWriter pool(" ", _xml, true);
  const Records records{std::make_shared<Record>(Record{"first"}),
                        std::make_shared<Record>(Record{"second"})};
  pool.records("LIST", records);
  pool.string("AFTER", property("text"));
  EXPECT_EQ(_xml,
            "old     <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n"
            "       <Name xsi:type=\"xsd:string\">LIST</Name>\r\n"
            "       <Fields xsi:type=\"com_Fields\">\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "           <Name xsi:type=\"xsd:string\">NAME</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">first</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "           <Name xsi:type=\"xsd:string\">DATE</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">2026-11-21T12:00:00.123UTC</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "           <Name xsi:type=\"xsd:string\">INTEGER</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">1</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "           <Name xsi:type=\"xsd:string\">BOOLEAN</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">FALSE</Value>\r\n"
            "         </Field>\r\n"
            "       </Fields>\r\n"
            "       <Fields xsi:type=\"com_Fields\">\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "           <Name xsi:type=\"xsd:string\">NAME</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">second</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "           <Name xsi:type=\"xsd:string\">DATE</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">2026-11-21T12:00:00.123UTC</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "           <Name xsi:type=\"xsd:string\">INTEGER</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">1</Value>\r\n"
            "         </Field>\r\n"
            "         <Field xsi:type=\"com_Field\" FieldType=\"boolean\">\r\n"
            "           <Name xsi:type=\"xsd:string\">BOOLEAN</Name>\r\n"
            "           <Value xsi:type=\"xsd:string\">FALSE</Value>\r\n"
            "         </Field>\r\n"
            "       </Fields>\r\n"
            "     </Field>\r\n"
            "     <Field xsi:type=\"com_Field\" FieldType=\"string\">\r\n"
            "       <Name xsi:type=\"xsd:string\">AFTER</Name>\r\n"
            "       <Value xsi:type=\"xsd:string\">text</Value>\r\n"
            "     </Field>\r\n");
}

TEST_F(PoolWriterTest, WritesRecordsPlain) {
  PoolWriter pool("", _xml, false);
  pool.records("LIST", ShortRecords{std::make_shared<ShortRecord>(ShortRecord{"NAME", "only"})});
  EXPECT_EQ(_xml,
            "old    <Field FieldType=\"array\">\r\n"
            "      <Name>LIST</Name>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"string\">\r\n"
            "          <Name>NAME</Name>\r\n"
            "          <Value>only</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "    </Field>\r\n");
}

TEST_F(PoolWriterTest, TheNameOfARecordsFieldMayBeLong) {
  const std::string name(10'000, 'n');
  PoolWriter pool("", _xml, false);
  pool.records("LIST", ShortRecords{std::make_shared<ShortRecord>(ShortRecord{name, "first"}),
                                    std::make_shared<ShortRecord>(ShortRecord{name, "second"})});
  std::string expected = "old    <Field FieldType=\"array\">\r\n      <Name>LIST</Name>\r\n";
  for (const char* value : {"first", "second"}) {
    expected.append("      <Fields>\r\n        <Field FieldType=\"string\">\r\n");
    expected.append("          <Name>").append(name).append("</Name>\r\n");
    expected.append("          <Value>").append(value).append("</Value>\r\n");
    expected.append("        </Field>\r\n      </Fields>\r\n");
  }
  EXPECT_EQ(_xml, expected + "    </Field>\r\n");
}

TEST_F(PoolWriterTest, AnEmptyListOfRecordsWritesNothing) {
  PoolWriter pool("", _xml, true);
  pool.records("LIST", Records{});
  EXPECT_EQ(_xml, "old");
  pool.integer("I", 1);
  EXPECT_EQ(_xml,
            "old    <Field xsi:type=\"com_Field\" FieldType=\"integer\">\r\n"
            "      <Name xsi:type=\"xsd:string\">I</Name>\r\n"
            "      <Value xsi:type=\"xsd:string\">1</Value>\r\n"
            "    </Field>\r\n");
}

TEST_F(PoolWriterTest, NullRecordsAreLeftOut) {
  PoolWriter pool("", _xml, false);
  pool.records(
      "LIST", ShortRecords{nullptr, std::make_shared<ShortRecord>(ShortRecord{"N", "one"}), nullptr,
                           std::make_shared<ShortRecord>(ShortRecord{"N", "two"}), nullptr});
  EXPECT_EQ(_xml,
            "old    <Field FieldType=\"array\">\r\n"
            "      <Name>LIST</Name>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"string\">\r\n"
            "          <Name>N</Name>\r\n"
            "          <Value>one</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"string\">\r\n"
            "          <Name>N</Name>\r\n"
            "          <Value>two</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "    </Field>\r\n");
}

TEST_F(PoolWriterTest, OnePoolMayHaveSeveralListsOfDifferentRecords) {
  PoolWriter pool("", _xml, false);
  pool.records("FIRST", ShortRecords{std::make_shared<ShortRecord>(ShortRecord{"A", "a"})});
  pool.records("SECOND", ShortRecords{std::make_shared<ShortRecord>(ShortRecord{"B", "b"})});
  EXPECT_EQ(_xml,
            "old    <Field FieldType=\"array\">\r\n"
            "      <Name>FIRST</Name>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"string\">\r\n"
            "          <Name>A</Name>\r\n"
            "          <Value>a</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "    </Field>\r\n"
            "    <Field FieldType=\"array\">\r\n"
            "      <Name>SECOND</Name>\r\n"
            "      <Fields>\r\n"
            "        <Field FieldType=\"string\">\r\n"
            "          <Name>B</Name>\r\n"
            "          <Value>b</Value>\r\n"
            "        </Field>\r\n"
            "      </Fields>\r\n"
            "    </Field>\r\n");
}

TEST_F(PoolWriterTest, GenericFieldsStartFourBlanksBehindThePrefix) {
  EXPECT_EQ(PoolWriter("", _xml, true).fieldPrefix(), "    ");
  EXPECT_EQ(PoolWriter("  ", _xml, true).fieldPrefix(), "      ");
  EXPECT_EQ(PoolWriter("\t", _xml, false).fieldPrefix(), "\t    ");
  EXPECT_EQ(PoolWriter(nullptr, _xml, false).fieldPrefix(), "(null)    ");
}

TEST_F(PoolWriterTest, EveryLineStartsWithThePrefixWhateverItIs) {
  const std::string longPrefix(1000, 'x');
  struct Row {
    ZtString prefix;
    std::string written;
  };
  const Row table[] = {{"\t", "\t"}, {"ab", "ab"}, {longPrefix, longPrefix}, {nullptr, "(null)"}};
  for (const Row& row : table) {
    const std::string& p = row.written;
    std::string xml;
    PoolWriter pool(row.prefix, xml, false);
    pool.begin("T", kNoon);
    pool.beginFields();
    pool.integer("I", 1);
    pool.records("LIST", ShortRecords{std::make_shared<ShortRecord>(ShortRecord{"NAME", "r"})});
    pool.endFields();
    pool.noFields();
    pool.end();
    EXPECT_EQ(xml, p + "<Data Pool=\"T\">\r\n" +                              //
                       p + "  <Date>2026-11-21T12:00:00.123UTC</Date>\r\n" +  //
                       p + "  <Fields>\r\n" +                                 //
                       p + "    <Field FieldType=\"integer\">\r\n" +          //
                       p + "      <Name>I</Name>\r\n" +                       //
                       p + "      <Value>1</Value>\r\n" +                     //
                       p + "    </Field>\r\n" +                               //
                       p + "    <Field FieldType=\"array\">\r\n" +            //
                       p + "      <Name>LIST</Name>\r\n" +                    //
                       p + "      <Fields>\r\n" +                             //
                       p + "        <Field FieldType=\"string\">\r\n" +       //
                       p + "          <Name>NAME</Name>\r\n" +                //
                       p + "          <Value>r</Value>\r\n" +                 //
                       p + "        </Field>\r\n" +                           //
                       p + "      </Fields>\r\n" +                            //
                       p + "    </Field>\r\n" +                               //
                       p + "  </Fields>\r\n" +                                //
                       p + "  <Fields/>\r\n" +                                //
                       p + "</Data>\r\n");
  }
}

TEST_F(PoolWriterTest, WritesNamesAndValuesAsTheyAre) {
  const std::string value = std::string(100'000, '<') + std::string("&\0\xff", 3);
  PoolWriter pool("", _xml, false);
  pool.string("<&>", value);
  EXPECT_EQ(_xml, "old    <Field FieldType=\"string\">\r\n      <Name><&></Name>\r\n      <Value>" +
                      value + "</Value>\r\n    </Field>\r\n");
}

}  // namespace
