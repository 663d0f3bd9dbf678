#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

constexpr const char* kUuid = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";

class ZtPortalDataTest : public PortalTest {};

// Making a document.

TEST_F(ZtPortalDataTest, KeepsWhatItIsMadeWith) {
  const auto document =
      ZtPortalData::initWithValues(kConfigurationUrl, false, "Brisalink", "{A0B1}", "2.1.77");
  EXPECT_EQ(document->configurationUrl(), "http://config.test/reporting/kelvane.xml");
  EXPECT_EQ(document->customerId(), "Brisalink");
  EXPECT_EQ(document->applicationId(), "{A0B1}");
  EXPECT_EQ(document->applicationVersion(), "2.1.77");
}

TEST_F(ZtPortalDataTest, KeepsMissingIdentifiersMissing) {
  const auto document = ZtPortalData::initWithValues(nullptr, false, nullptr, nullptr, nullptr);
  ASSERT_NE(document, nullptr);
  EXPECT_TRUE(document->configurationUrl().isNull());
  EXPECT_TRUE(document->customerId().isNull());
  EXPECT_TRUE(document->applicationId().isNull());
  EXPECT_TRUE(document->applicationVersion().isNull());
}

TEST_F(ZtPortalDataTest, HasNoPoolsAtFirst) { EXPECT_TRUE(makeDocument()->pools().empty()); }

TEST_F(ZtPortalDataTest, ReadsItsConfigurationAndGoesOnlineWhenItIsMade) {
  const auto document =
      ZtPortalData::initWithValues(kConfigurationUrl, false, "Kelvane", kApplicationId, "2.1.77");
  EXPECT_THAT(steps, ElementsAre("GET http://config.test/reporting/kelvane.xml",
                                 "version http://report.test/soap"));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_EQ(document->reportTestUrl(), "http://report.test/soap-test");
  EXPECT_EQ(document->serverVersion(), "7.1");
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->online());
}

TEST_F(ZtPortalDataTest, IsMadeAlsoWhenNoServerAnswers) {
  cutOff();
  const auto document = makeDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->reportUrl(), "");
  EXPECT_EQ(document->reportTestUrl(), "");
  EXPECT_TRUE(document->serverVersion().isNull());
  EXPECT_FALSE(document->gotConfiguration());
  EXPECT_FALSE(document->online());
}

TEST_F(ZtPortalDataTest, IsMadeAlsoWhenTheTransportRaises) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raise(); };
  const auto document = makeDocument();
  ASSERT_NE(document, nullptr);
  EXPECT_EQ(document->reportUrl(), "");
  EXPECT_FALSE(document->gotConfiguration());
  EXPECT_FALSE(document->online());
}

TEST_F(ZtPortalDataTest, LetsForeignExceptionsOutOfItsMaking) {
  platform.http_.answer = [](const auto&) -> HttpResponse { raiseForeign(); };
  EXPECT_THROW(makeDocument(), ForeignError);
}

// Identifiers.

TEST_F(ZtPortalDataTest, AUuidIsRandomAndInUpperCaseWithoutBraces) {
  const ZtString first = ZtPortalData::createUUID();
  const ZtString second = ZtPortalData::createUUID();
  EXPECT_THAT(std::string(first.view()), MatchesRegex(kUuid));
  EXPECT_THAT(std::string(second.view()), MatchesRegex(kUuid));
  EXPECT_NE(first, second);
}

TEST_F(ZtPortalDataTest, AReportIdIsAUuidBetweenBraces) {
  const std::string id(makeDocument()->reportId().view());
  EXPECT_EQ(id.size(), 38U);
  EXPECT_THAT(id, MatchesRegex("\\{" + std::string(kUuid) + "\\}"));
}

TEST_F(ZtPortalDataTest, TwoDocumentsDifferInTheReportIdAndAgreeInTheMachineId) {
  const auto first = makeDocument();
  const auto second = makeDocument();
  EXPECT_NE(first->reportId(), second->reportId());
  EXPECT_EQ(first->machineId(), second->machineId());
}

TEST_F(ZtPortalDataTest, TheMachineIdIsThePlatformUuidBetweenBraces) {
  EXPECT_EQ(makeDocument()->machineId(), "{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}");
}

TEST_F(ZtPortalDataTest, TheMachineIdOfAMachineWithoutUuidIsTwoBraces) {
  platform.machineIdentity_.uuid = nullptr;
  EXPECT_EQ(makeDocument()->machineId(), "{}");
  platform.machineIdentity_.uuid = "";
  EXPECT_EQ(makeDocument()->machineId(), "{}");
}

TEST_F(ZtPortalDataTest, TheIdentifiersStayWhenTheMachineChanges) {
  const auto document = makeDocumentWithPool();
  const ZtString reportId = document->reportId();
  platform.machineIdentity_.uuid = "00000000-0000-4000-8000-000000000000";
  document->reportToServer();
  EXPECT_EQ(document->reportId(), reportId);
  EXPECT_EQ(document->machineId(), "{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}");
}

// Pools.

TEST_F(ZtPortalDataTest, AddsAGenericPoolOfTheGivenTypeAndTime) {
  const auto document = makeDocument();
  const auto pool = document->addPool("CUSTOM", ZtDate::fromMilliseconds(1234));
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->poolType(), "CUSTOM");
  EXPECT_EQ(pool->timeStamp(), ZtDate::fromMilliseconds(1234));
  EXPECT_THAT(document->pools(), ElementsAre(pool));
}

TEST_F(ZtPortalDataTest, AddsAPoolWithoutTypeAndTime) {
  const auto pool = makeDocument()->addPool(nullptr, ZtDate());
  ASSERT_NE(pool, nullptr);
  EXPECT_TRUE(pool->poolType().isNull());
  EXPECT_TRUE(pool->timeStamp().isNull());
}

TEST_F(ZtPortalDataTest, AddsAnExecutionPoolOfTheGivenTime) {
  const auto document = makeDocument();
  const auto pool = document->addPoolExecution(ZtDate::fromMilliseconds(1234));
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->poolType(), "EXECUTION");
  EXPECT_EQ(pool->timeStamp(), ZtDate::fromMilliseconds(1234));
  EXPECT_EQ(pool->startTime(), ZtDate::fromMilliseconds(1234));
  EXPECT_THAT(document->pools(), ElementsAre(std::shared_ptr<ZtPortalPool>(pool)));
}

TEST_F(ZtPortalDataTest, AddsEachTypedPoolOfTheGivenTimeAtTheEnd) {
  const auto document = makeDocument();
  const ZtDate time = ZtDate::fromMilliseconds(1234);
  const std::vector<std::shared_ptr<ZtPortalPool>> added{
      document->addPoolComputerSystem(time),
      document->addPoolExecution(time),
      document->addPoolDeinstallation(time),
      document->addPoolInitialization(time),
      document->addPoolDiagnose(time),
      document->addPoolConnectionManager(time),
      document->addPoolComputerSystemWithAutoCheck(time, false)};
  EXPECT_EQ(document->pools(), added);
  std::vector<std::string> types;
  for (const auto& pool : added) {
    EXPECT_EQ(pool->timeStamp(), time);
    types.emplace_back(pool->poolType().view());
  }
  EXPECT_EQ(types, (std::vector<std::string>{"COMPUTER_SYSTEM", "EXECUTION", "DEINSTALLATION",
                                             "INITIALIZATION", "DIAGNOSE", "CONNECTIONMANAGER",
                                             "COMPUTER_SYSTEM"}));
}

TEST_F(ZtPortalDataTest, OnlyAnInventoryWithACheckLooksAtTheMachine) {
  const auto document = makeDocument();
  EXPECT_EQ(document->addPoolComputerSystem(ZtDate())->osName(), "");
  EXPECT_EQ(document->addPoolComputerSystemWithAutoCheck(ZtDate(), false)->osName(), "");
  EXPECT_TRUE(platform.childProcess_.runs.empty());
  EXPECT_EQ(document->addPoolComputerSystemWithAutoCheck(ZtDate(), true)->osName(), "MACOS");
  EXPECT_EQ(platform.childProcess_.runs.size(), 1U);
}

TEST_F(ZtPortalDataTest, KeepsItsPoolsInTheOrderInWhichTheyWereAdded) {
  const auto document = makeDocument();
  const std::shared_ptr<ZtPortalPool> first = document->addPool("B", ZtDate());
  const std::shared_ptr<ZtPortalPool> second = document->addPoolExecution(ZtDate());
  const std::shared_ptr<ZtPortalPool> third = document->addPool("A", ZtDate());
  EXPECT_THAT(document->pools(), ElementsAre(first, second, third));
}

TEST_F(ZtPortalDataTest, TheListOfPoolsIsASnapshot) {
  const auto document = makeDocument();
  document->addPool("A", ZtDate());
  auto before = document->pools();
  document->addPool("B", ZtDate());
  EXPECT_EQ(before.size(), 1U);
  before.clear();
  EXPECT_EQ(document->pools().size(), 2U);
}

TEST_F(ZtPortalDataTest, OwnsItsPools) {
  auto document = makeDocument();
  const std::weak_ptr<ZtPortalPool> pool = document->addPool("A", ZtDate());
  EXPECT_FALSE(pool.expired());
  document.reset();
  EXPECT_TRUE(pool.expired());
}

// Access by index.

/// Name and reason of what the access raises; two empty texts when it raises nothing.
std::pair<std::string, std::string> raisedBy(const ZtPortalData& document, std::int32_t index) {
  try {
    ZtTestAccess::pool(document, index);
  } catch (const ZtException& error) {
    return {std::string(error.name().view()), std::string(error.reason().view())};
  }
  return {};
}

TEST_F(ZtPortalDataTest, GivesThePoolAtAnIndex) {
  const auto document = makeDocument();
  const auto first = document->addPool("A", ZtDate());
  const auto second = document->addPool("B", ZtDate());
  EXPECT_EQ(ZtTestAccess::pool(*document, 0), first);
  EXPECT_EQ(ZtTestAccess::pool(*document, 1), second);
}

TEST_F(ZtPortalDataTest, RaisesOutOfBoundsForAnIndexBesideItsPools) {
  using Raised = std::pair<std::string, std::string>;
  const auto document = makeDocument();
  document->addPool("A", ZtDate());
  document->addPool("B", ZtDate());
  EXPECT_EQ(raisedBy(*document, -1), Raised("OUT_OF_BOUNDS", "Index (4294967295) out of bounds"));
  EXPECT_EQ(raisedBy(*document, std::numeric_limits<std::int32_t>::min()),
            Raised("OUT_OF_BOUNDS", "Index (2147483648) out of bounds"));
  EXPECT_EQ(raisedBy(*document, 2), Raised("OUT_OF_BOUNDS", "Index (2) out of bounds"));
  EXPECT_EQ(raisedBy(*document, 3), Raised("OUT_OF_BOUNDS", "Index (3) out of bounds"));
}

TEST_F(ZtPortalDataTest, RaisesTheListsOwnErrorWithoutPools) {
  const auto document = makeDocument();
  for (const std::int32_t index : {0, 1, 5}) {
    const std::string name = raisedBy(*document, index).first;
    EXPECT_NE(name, "") << index;
    EXPECT_NE(name, "OUT_OF_BOUNDS") << index;
  }
  EXPECT_EQ(raisedBy(*document, -1).first, "OUT_OF_BOUNDS");
}

}  // namespace
}  // namespace zt::test
