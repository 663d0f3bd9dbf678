// SPDX-License-Identifier: Apache-2.0
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/portal/PortalTest.h"
#include "ztportal/portal/ZtPortalData.h"

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Pair;

constexpr const char* kUuid = "[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}";

class ZtPortalDataTest : public PortalTest {};

// Creation.

TEST_F(ZtPortalDataTest, KeepsTheGivenValues) {
  const auto document =
      ZtPortalData::initWithValues(kConfigurationUrl, false, "Brisalink", "{A0B1}", "2.1.77");
  EXPECT_EQ(document->configurationUrl(), "http://config.test/reporting/kelvane.xml");
  EXPECT_EQ(document->customerId(), "Brisalink");
  EXPECT_EQ(document->applicationId(), "{A0B1}");
  EXPECT_EQ(document->applicationVersion(), "2.1.77");
  EXPECT_TRUE(document->pools().empty());

  const auto missing = ZtPortalData::initWithValues(nullptr, false, nullptr, nullptr, nullptr);
  EXPECT_TRUE(missing->configurationUrl().isNull());
  EXPECT_TRUE(missing->customerId().isNull());
  EXPECT_TRUE(missing->applicationId().isNull());
  EXPECT_TRUE(missing->applicationVersion().isNull());
}

TEST_F(ZtPortalDataTest, ReadsItsConfigurationAndGoesOnlineAtCreation) {
  const auto document =
      ZtPortalData::initWithValues(kConfigurationUrl, false, "Kelvane", kApplicationId, "2.1.77");
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  EXPECT_EQ(document->reportUrl(), "http://report.test/soap");
  EXPECT_EQ(document->reportTestUrl(), "http://report.test/soap-test");
  EXPECT_EQ(document->serverVersion(), "7.1");
  EXPECT_TRUE(document->gotConfiguration());
  EXPECT_TRUE(document->online());
}

TEST_F(ZtPortalDataTest, WithTheCacheFlagALocalCopyIsReadAndWithoutOneTheConfigurationIsFetched) {
  ZtPortalData::initWithValues(kConfigurationUrl, true, "Kelvane", kApplicationId, "2.1.77");
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  forget();
  platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>");
  ZtPortalData::initWithValues(kConfigurationUrl, true, "Kelvane", kApplicationId, "2.1.77");
  EXPECT_THAT(steps, ElementsAre("version http://local.test/"));
}

TEST_F(ZtPortalDataTest, IsCreatedAlsoWithoutAResponseOrWhenTheTransportThrows) {
  const auto noResponse = [](const auto&) { return HttpResponse{}; };
  const auto throwing = [](const auto&) -> HttpResponse { throwZtException(); };
  using Response = std::function<HttpResponse(const FakeHttpTransport::Asked&)>;
  for (const Response& response : {Response(noResponse), Response(throwing)}) {
    platform.http_.answer = response;
    const auto document = makeDocument();
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->reportUrl(), "");
    EXPECT_EQ(document->reportTestUrl(), "");
    EXPECT_TRUE(document->serverVersion().isNull());
    EXPECT_FALSE(document->gotConfiguration());
    EXPECT_FALSE(document->online());
  }
  platform.http_.answer = [](const auto&) -> HttpResponse { throwForeign(); };
  EXPECT_THROW(makeDocument(), ForeignError);
}

TEST_F(ZtPortalDataTest, ThePrivateOperationsUseTheUrlGivenAtCreation) {
  cutOff();
  const auto document = makeDocument();
  configuration = {200, "<c><defSOAP>http://report.test/soap</defSOAP></c>"};
  version = {200, "<versioninfo>7.2</versioninfo>"};
  EXPECT_TRUE(ZtTestAccess::getConfiguration(*document, "http://other.test/", false));
  EXPECT_EQ(ZtTestAccess::getReportUrl(*document), "http://report.test/soap");
  EXPECT_FALSE(document->online());
  EXPECT_EQ(ZtTestAccess::getServerVersion(*document), "7.2");
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  forget();
  ZtTestAccess::initHttp(*document, nullptr, false);
  EXPECT_THAT(steps, ElementsAre(kGet, kVersion));
  EXPECT_TRUE(document->online());
  platform.files_.write(kLocalCopy, "<c><defSOAP>http://local.test/</defSOAP></c>");
  ZtTestAccess::initHttp(*document, kConfigurationUrl, true);
  EXPECT_EQ(document->reportUrl(), "http://local.test/");
  configuration = {200, "fetched"};
  EXPECT_EQ(ZtTestAccess::httpRequest(*document, kConfigurationUrl, nullptr), "fetched");
  EXPECT_FALSE(ZtTestAccess::mutexEnabled(*document));
  EXPECT_EQ(ZtTestAccess::localSupportFolder(), "/home/user/.local/share/Kelvane/Setup");
  EXPECT_EQ(ZtTestAccess::getReportFolder(), kReports);
  EXPECT_EQ(ZtPortalData::reportFolder(), kReports);
  const std::string file = inStore(std::string(document->reportId().view()) + ".ztr");
  EXPECT_EQ(ZtTestAccess::getReportFile(*document), file);
  EXPECT_EQ(document->reportFile(), file);
}

// Identifiers.

TEST_F(ZtPortalDataTest, AUuidIsRandomAndInUpperCaseWithoutBraces) {
  const ZtString first = ZtPortalData::createUUID();
  const ZtString second = ZtPortalData::createUUID();
  EXPECT_THAT(std::string(first.view()), MatchesRegex(kUuid));
  EXPECT_THAT(std::string(second.view()), MatchesRegex(kUuid));
  EXPECT_NE(first, second);
}

TEST_F(ZtPortalDataTest, AReportIdHas38CharactersAUuidInBraces) {
  const std::string id(makeDocument()->reportId().view());
  EXPECT_EQ(id.size(), 38U);
  EXPECT_THAT(id, MatchesRegex("\\{" + std::string(kUuid) + "\\}"));
}

TEST_F(ZtPortalDataTest, TwoDocumentsDifferInTheReportIdAndAgreeInTheMachineId) {
  const auto first = makeDocument();
  const auto second = makeDocument();
  EXPECT_NE(first->reportId(), second->reportId());
  EXPECT_EQ(first->machineId(), "{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}");
  EXPECT_EQ(second->machineId(), first->machineId());
}

TEST_F(ZtPortalDataTest, AMachineWithoutAUuidHasAnEmptyPairOfBraces) {
  for (const ZtString& uuid : {ZtString(), ZtString("")}) {
    platform.machineIdentity_.uuid = uuid;
    EXPECT_EQ(makeDocument()->machineId(), "{}");
  }
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

TEST_F(ZtPortalDataTest, AddsPoolsOfTheGivenTypeAndTimeAtTheEnd) {
  const auto document = makeDocument();
  const ZtDate time = ZtDate::fromMilliseconds(1234);
  const std::vector<std::shared_ptr<ZtPortalPool>> added{
      document->addPool("CUSTOM", time),
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
  EXPECT_THAT(types,
              ElementsAre("CUSTOM", "COMPUTER_SYSTEM", "EXECUTION", "DEINSTALLATION",
                          "INITIALIZATION", "DIAGNOSE", "CONNECTIONMANAGER", "COMPUTER_SYSTEM"));
  const auto missing = document->addPool(nullptr, ZtDate());
  EXPECT_TRUE(missing->poolType().isNull());
  EXPECT_TRUE(missing->timeStamp().isNull());
}

TEST_F(ZtPortalDataTest, OnlyAnInventoryWithAutoCheckChecksTheMachine) {
  const auto document = makeDocument();
  EXPECT_EQ(document->addPoolComputerSystem(ZtDate())->osName(), "");
  EXPECT_EQ(document->addPoolComputerSystemWithAutoCheck(ZtDate(), false)->osName(), "");
  EXPECT_TRUE(platform.subprocesses_.runs.empty());
  EXPECT_EQ(document->addPoolComputerSystemWithAutoCheck(ZtDate(), true)->osName(), "MACOS");
  EXPECT_EQ(platform.subprocesses_.runs.size(), 1U);
}

TEST_F(ZtPortalDataTest, OwnsItsPoolsAndListsThemAsASnapshot) {
  auto document = makeDocument();
  const std::weak_ptr<ZtPortalPool> pool = document->addPool("A", ZtDate());
  auto before = document->pools();
  document->addPool("B", ZtDate());
  EXPECT_EQ(before.size(), 1U);
  before.clear();
  EXPECT_EQ(document->pools().size(), 2U);
  document.reset();
  EXPECT_TRUE(pool.expired());
}

/// Name and reason of the exception that `_pool` throws; empty strings if it throws none.
std::pair<std::string, std::string> thrownBy(const ZtPortalData& document, std::int32_t index) {
  try {
    ZtTestAccess::pool(document, index);
  } catch (const ZtException& error) {
    return {std::string(error.name().view()), std::string(error.reason().view())};
  }
  return {};
}

TEST_F(ZtPortalDataTest, AnIndexOutsideItsPoolsIsOutOfBounds) {
  const auto document = makeDocument();
  const auto first = document->addPool("A", ZtDate());
  const auto second = document->addPool("B", ZtDate());
  EXPECT_EQ(ZtTestAccess::pool(*document, 0), first);
  EXPECT_EQ(ZtTestAccess::pool(*document, 1), second);
  const std::pair<std::int32_t, const char*> rows[] = {
      {-1, "Index (4294967295) out of bounds"},
      {std::numeric_limits<std::int32_t>::min(), "Index (2147483648) out of bounds"},
      {2, "Index (2) out of bounds"},
      {3, "Index (3) out of bounds"}};
  for (const auto& [index, reason] : rows) {
    EXPECT_THAT(thrownBy(*document, index), Pair("OUT_OF_BOUNDS", reason));
  }
}

TEST_F(ZtPortalDataTest, WithoutPoolsAnIndexThrowsTheListsOwnError) {
  const auto document = makeDocument();
  for (const std::int32_t index : {0, 1, 5}) {
    const std::string name = thrownBy(*document, index).first;
    EXPECT_NE(name, "") << index;
    EXPECT_NE(name, "OUT_OF_BOUNDS") << index;
  }
  EXPECT_EQ(thrownBy(*document, -1).first, "OUT_OF_BOUNDS");
}

// Text.

TEST_F(ZtPortalDataTest, TheTextHasTheIdentifiersAndTheCurrentValuesOfThePools) {
  const auto document = makeDocumentWithPool();
  const std::string text = document->generateXml("<ignored/>", false);
  EXPECT_THAT(text, HasSubstr("  <ReportID>" + std::string(document->reportId().view()) +
                              "</ReportID>\r\n"
                              "  <MachineID>{564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5}</MachineID>\r\n"
                              "  <CustomerID>Kelvane</CustomerID>\r\n"
                              "  <ApplicationID>{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}"
                              "</ApplicationID>\r\n"
                              "  <ApplicationVersion>2.1.77</ApplicationVersion>\r\n"));
  EXPECT_EQ(document->getSoapString(), document->generateXml(nullptr, true));
  EXPECT_EQ(document->getSoapString(), document->getSoapString());
  document->pools().front()->setPoolType("OTHER");
  EXPECT_THAT(document->getSoapString(), HasSubstr("Pool=\"OTHER\">"));
}

TEST_F(ZtPortalDataTest, AnEmptyDocumentHasAnEmptyText) {
  const auto document = makeDocument();
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->generateXml(nullptr, true), "");
  EXPECT_EQ(document->generateXml(nullptr, false), "");
}

class ThrowingField final : public ZtPortalPoolField {
 public:
  explicit ThrowingField(void (*thrower)())
      : ZtPortalPoolField(Creation{}, "THROWING"), _thrower(thrower) {}
  void addToXml(const ZtString& /*prefix*/, std::string& /*xml*/, bool /*soap*/) const override {
    _thrower();
  }

 private:
  void (*_thrower)();
};

TEST_F(ZtPortalDataTest, TheTextIsEmptyWhenAPoolThrowsAndForeignExceptionsPass) {
  const auto document = makeDocumentWithPool();
  const auto fields = document->addPool("SECOND", ZtDate())->fields()->mutableFields();
  fields->push_back(std::make_shared<ThrowingField>(&throwZtException));
  EXPECT_EQ(document->getSoapString(), "");
  EXPECT_EQ(document->generateXml(nullptr, true), "");
  EXPECT_EQ(document->generateXml(nullptr, false), "");
  fields->front() = std::make_shared<ThrowingField>(&throwForeign);
  EXPECT_THROW(document->getSoapString(), ForeignError);
  EXPECT_THROW(document->generateXml(nullptr, false), ForeignError);
}

}  // namespace
}  // namespace zt::test
