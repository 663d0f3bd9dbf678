// SPDX-License-Identifier: Apache-2.0
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/unit/c/CTest.h"
#include "ztportal/platform/json/Json.h"

namespace zt::test {
namespace {

using ::testing::HasSubstr;

class CPoolsTest : public CTest {
 protected:
  static std::optional<std::string> stringOf(zt_pool* pool, const char* key) {
    const char* value = nullptr;
    std::size_t length = 0;
    EXPECT_EQ(zt_pool_get_string(pool, key, &value, &length), ZT_OK) << key;
    if (value == nullptr) return std::nullopt;
    return std::string(value, length);
  }
  static std::int64_t integerOf(zt_pool* pool, const char* key) {
    std::int64_t value = 0;
    EXPECT_EQ(zt_pool_get_integer(pool, key, &value), ZT_OK) << key;
    return value;
  }
};

/// Calls every setter and getter with a key of the type, and compares the statuses.
void checkKey(zt_pool* pool, const char* key, const std::string& type, const Json& enumerations) {
  SCOPED_TRACE(key);
  const Json* const names = enumerations.find(type);
  const bool isEnumeration = names != nullptr;
  const bool isString = type == "string";
  const bool isDate = type == "date";
  const bool isBoolean = type == "boolean";
  const bool isNumber = type == "integer" || type == "64-bit integer" || isBoolean || isEnumeration;
  const bool isTexts = type == "list of texts";
  const bool isList = type == "list";
  ASSERT_TRUE(isString || isDate || isNumber || isTexts || isList) << type;
  const auto okIf = [](bool isRight) { return isRight ? ZT_OK : ZT_WRONG_TYPE; };

  const char* text = "unset";
  std::size_t length = 0;
  std::int64_t number = 0;
  if (isEnumeration) {
    EXPECT_EQ(zt_pool_set_string(pool, key, "NO SUCH NAME"), ZT_OUT_OF_RANGE);
    EXPECT_EQ(zt_pool_set_string(pool, key, ""), ZT_OUT_OF_RANGE);
    EXPECT_EQ(zt_pool_set_string(pool, key, nullptr), ZT_BAD_ARGUMENT);
    for (std::size_t i = 0; i < names->values().size(); ++i) {
      const std::string& name = names->values()[i].string();
      EXPECT_EQ(zt_pool_set_string(pool, key, name.c_str()),
                name.empty() ? ZT_OUT_OF_RANGE : ZT_OK);
      EXPECT_EQ(zt_pool_set_integer(pool, key, static_cast<std::int64_t>(i)), ZT_OK);
      EXPECT_EQ(zt_pool_get_string(pool, key, &text, nullptr), ZT_OK);
      EXPECT_EQ(text, name);
    }
  } else {
    EXPECT_EQ(zt_pool_set_string(pool, key, nullptr), isTexts ? ZT_BAD_ARGUMENT : okIf(isString));
    EXPECT_EQ(zt_pool_set_string(pool, key, "text"), okIf(isString || isTexts));
    EXPECT_EQ(zt_pool_set_string_n(pool, key, "a\0b", 3), okIf(isString || isTexts));
    EXPECT_EQ(zt_pool_get_string(pool, key, &text, &length), okIf(isString));
    if (isString) {
      EXPECT_EQ(std::string(text, length), std::string("a\0b", 3));
    } else {
      EXPECT_STREQ(text, "unset");
    }
  }

  const std::map<std::string, std::pair<std::int64_t, std::int64_t>> ranges{
      {"integer", {INT32_MIN, INT32_MAX}},
      {"64-bit integer", {INT64_MIN, INT64_MAX}},
      {"boolean", {-128, 255}}};
  const auto range = ranges.find(type);
  const auto [smallest, largest] =
      range != ranges.end() ? range->second : std::pair(std::int64_t{0}, INT64_MAX);
  for (const std::int64_t value : {smallest, largest, std::int64_t{1}}) {
    EXPECT_EQ(zt_pool_set_integer(pool, key, value), okIf(isNumber)) << value;
    EXPECT_EQ(zt_pool_get_integer(pool, key, &number), okIf(isNumber || isDate));
    if (isNumber) {
      EXPECT_EQ(number, isBoolean && value == 255 ? -1 : value);
    }
  }
  if (isNumber && smallest != INT64_MIN) {
    EXPECT_EQ(zt_pool_set_integer(pool, key, smallest - 1), ZT_OUT_OF_RANGE);
    EXPECT_EQ(zt_pool_set_integer(pool, key, INT64_MIN), ZT_OUT_OF_RANGE);
  }
  if (isNumber && largest != INT64_MAX) {
    EXPECT_EQ(zt_pool_set_integer(pool, key, largest + 1), ZT_OUT_OF_RANGE);
    EXPECT_EQ(zt_pool_set_integer(pool, key, INT64_MAX), ZT_OUT_OF_RANGE);
  }
  if (isNumber) {  // a value that does not fit changes nothing
    EXPECT_EQ(zt_pool_get_integer(pool, key, &number), ZT_OK);
    EXPECT_EQ(number, 1);
  }

  EXPECT_EQ(zt_pool_set_float(pool, key, 1), ZT_WRONG_TYPE);
  EXPECT_EQ(zt_pool_set_boolean(pool, key, false), okIf(isBoolean));
  EXPECT_EQ(zt_pool_set_date(pool, key, 1234), okIf(isDate));
  if (isDate) {
    EXPECT_EQ(zt_pool_get_integer(pool, key, &number), ZT_OK);
    EXPECT_EQ(number, 1234);
  }
  EXPECT_EQ(zt_pool_set_null(pool, key), okIf(isString || isDate));
  if (isString) {
    EXPECT_EQ(zt_pool_get_string(pool, key, &text, &length), ZT_OK);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(length, 0U);
  }
  if (isDate) {
    EXPECT_EQ(zt_pool_get_integer(pool, key, &number), ZT_OK);
    EXPECT_EQ(number, ZT_NO_DATE);
  }
  zt_pool* record = pool;
  EXPECT_EQ(zt_pool_add_record(pool, key, 0, &record), okIf(isList));
  EXPECT_EQ(record != nullptr, isList);
  zt_pool* fields = nullptr;
  if (isList) {
    EXPECT_EQ(zt_pool_fields(record, &fields), ZT_WRONG_TYPE);
  }
}

TEST_F(CPoolsTest, EveryKeyTakesItsTypeAndNoOther) {
  const Json schema = parseJson(zt_schema());
  const Report own = makeReport(ZT_OFFLINE);
  std::size_t keys = 0;
  std::set<std::string> kinds;
  const Json& enumerations = *schema.find("enumerations");
  for (const Json& kind : schema.find("pools")->values()) {
    kinds.insert(kind.find("kind")->string());
    zt_pool* const pool = addPool(own, kind.find("kind")->string().c_str());
    for (const Json& key : kind.find("keys")->values()) {
      const std::string& name = key.find("key")->string();
      checkKey(pool, name.c_str(), key.find("type")->string(), enumerations);
      ++keys;
      if (key.find("of") == nullptr) continue;
      zt_pool* record = nullptr;
      ASSERT_EQ(zt_pool_add_record(pool, name.c_str(), 0, &record), ZT_OK);
      for (const Json& of : key.find("of")->values()) {
        checkKey(record, of.find("key")->string().c_str(), of.find("type")->string(), enumerations);
        ++keys;
      }
    }
  }
  EXPECT_EQ(kinds,
            (std::set<std::string>{"generic", "execution", "deinstallation", "initialization",
                                   "diagnose", "connectionManager", "computerSystem"}));
  EXPECT_EQ(enumerations.members().size(), 3U);
  EXPECT_GT(keys, 90U);
}

TEST_F(CPoolsTest, UnknownKeysAndKindsAreNamed) {
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* pool = addPool(own, "diagnose");
  for (const char* key : {"", "startPoint", "Steps", "DIAGNOSESTEPS", "steps "}) {
    EXPECT_EQ(zt_pool_set_string(pool, key, "x"), ZT_UNKNOWN_KEY);
    EXPECT_EQ(zt_last_error(), "no such key: \"" + std::string(key) + "\"");
  }
  // It has a row without a key.
  EXPECT_EQ(zt_pool_set_boolean(addPool(own, "computerSystem"), "", true), ZT_UNKNOWN_KEY);
  for (const char* kind : {"", "EXECUTION", "Execution", "executions"}) {
    EXPECT_EQ(zt_report_add_pool(own.get(), kind, 0, &pool), ZT_UNKNOWN_KEY);
    EXPECT_EQ(pool, nullptr);
    EXPECT_EQ(zt_last_error(), "no such kind of pool: \"" + std::string(kind) + "\"");
  }
}

TEST_F(CPoolsTest, AWholeReportHasWhatTheHostSet) {
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* const pool = addPool(own, "execution");
  EXPECT_EQ(zt_pool_set_string(pool, "startPoint", "gr\xc3\xbc\xc3\x9f"), ZT_OK);
  EXPECT_EQ(zt_pool_set_boolean(pool, "cancelled", true), ZT_OK);
  EXPECT_EQ(zt_pool_set_null(pool, "endPoint"), ZT_OK);
  zt_pool* step = nullptr;
  EXPECT_EQ(zt_pool_add_record(pool, "steps", 1000, &step), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(step, "stepName", "Copy"), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(step, "stepType", "ERROR"), ZT_OK);
  zt_pool* fields = nullptr;
  EXPECT_EQ(zt_pool_fields(pool, &fields), ZT_OK);
  EXPECT_EQ(zt_pool_set_string(fields, "S", nullptr), ZT_OK);
  EXPECT_EQ(zt_pool_set_string_n(fields, "Z", "a\0b", 3), ZT_OK);
  zt_pool* disks = nullptr;
  EXPECT_EQ(zt_pool_add_record(fields, "DISKS", 0, &disks), ZT_OK);
  EXPECT_EQ(zt_pool_set_integer(disks, "I", INT32_MIN), ZT_OK);
  EXPECT_EQ(zt_pool_set_float(disks, "F", 0.625F), ZT_OK);
  EXPECT_EQ(zt_pool_set_boolean(disks, nullptr, true), ZT_OK);
  EXPECT_EQ(zt_pool_set_null(disks, "N"), ZT_OK);

  const auto document =
      ZtPortalData::initWithValues(nullptr, false, "Kelvane", kApplicationId, "2.1");
  const auto execution = document->addPoolExecution(ZtDate::fromMilliseconds(0));
  execution->setStartPoint("gr\xc3\xbc\xc3\x9f");
  execution->setCancelled(1);
  execution->setEndPoint(nullptr);
  execution->addStep(ZtDate::fromMilliseconds(1000), "Copy", ZtPortalStepError);
  execution->addString("S", nullptr);
  execution->addString("Z", std::string_view("a\0b", 3));
  const auto array = execution->addArray("DISKS");
  array->addInteger("I", INT32_MIN);
  array->addFloat("F", 0.625F);
  array->addBOOL(nullptr, 1);
  array->mutableFields()->push_back(ZtPortalPoolField::initWithName("N"));

  for (const bool soap : {true, false}) {
    std::string expected = document->generateXml(nullptr, soap);
    const std::string id(document->reportId().view());
    expected.replace(expected.find(id), id.size(), valueOf(own, "reportId"));
    EXPECT_EQ(rendered(own, soap), expected);
  }
}

TEST_F(CPoolsTest, DatesAreMillisecondsTheTimeOfTheCallOrMissing) {
  const Report own = makeReport(ZT_OFFLINE);
  const std::int64_t before = ZtDate::now().milliseconds();
  zt_pool* pool = nullptr;
  ASSERT_EQ(zt_report_add_pool(own.get(), "execution", ZT_NOW, &pool), ZT_OK);
  std::int64_t start = 0;
  EXPECT_EQ(zt_pool_get_integer(pool, "startTime", &start), ZT_OK);
  EXPECT_GE(start, before);
  EXPECT_LE(start, ZtDate::now().milliseconds());
  EXPECT_EQ(zt_pool_set_date(pool, "startTime", ZT_NO_DATE), ZT_OK);
  EXPECT_EQ(zt_pool_get_integer(pool, "startTime", &start), ZT_OK);
  EXPECT_EQ(start, ZT_NO_DATE);
  EXPECT_EQ(zt_pool_set_date(pool, "endTime", ZT_NOW), ZT_OK);
  EXPECT_EQ(zt_pool_get_integer(pool, "endTime", &start), ZT_OK);
  EXPECT_GE(start, before);
}

TEST_F(CPoolsTest, HandlesStayValidWhileOthersAreAdded) {
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* const first = addPool(own, "execution");
  std::vector<zt_pool*> records;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(zt_pool_add_record(first, "steps", 0, &records.emplace_back()), ZT_OK);
    ASSERT_EQ(zt_pool_set_string(records.back(), "stepName", std::to_string(i).c_str()), ZT_OK);
    ASSERT_EQ(zt_report_add_pool(own.get(), "generic", 0, nullptr), ZT_OK);
    zt_pool* fields = nullptr;
    ASSERT_EQ(zt_pool_fields(records.back(), &fields), ZT_WRONG_TYPE);
  }
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(stringOf(records[static_cast<std::size_t>(i)], "stepName"), std::to_string(i));
  }
  EXPECT_EQ(stringOf(first, "executionType"), "Standard");
}

TEST_F(CPoolsTest, AnInventoryIsFilledFromTheMachine) {
  const Report own = makeReport(ZT_OFFLINE);
  zt_pool* pool = nullptr;
  ASSERT_EQ(zt_report_add_inventory(own.get(), ZT_NOW, &pool), ZT_OK);
  EXPECT_EQ(stringOf(pool, "osName"), "MACOS");
  EXPECT_EQ(zt_pool_add_record(pool, "firewallApps", ZT_NOW, nullptr), ZT_OK);
  EXPECT_THAT(rendered(own), HasSubstr("<Name>FIREWALLAPP_NAME</Name>"));
  EXPECT_EQ(zt_report_add_inventory(own.get(), ZT_NOW, nullptr), ZT_OK);
  EXPECT_EQ(integerOf(pool, "servicePack"), integerOf(pool, "servicePack"));
}

}  // namespace
}  // namespace zt::test
