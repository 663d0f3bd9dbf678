#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tools/inbox/ReportStore.h"

namespace {

using std::chrono::milliseconds;
using zt::inbox::Report;
using zt::inbox::ReportStore;

Report reportWith(const std::string& id, const std::string& customer = "Kelvane") {
  Report report;
  report.identity.reportId = id;
  report.identity.customerId = customer;
  return report;
}

using Numbers = std::vector<std::uint64_t>;

Numbers numbersOf(const ReportStore& store, const zt::inbox::ReportQuery& query = {}) {
  Numbers numbers;
  for (const auto& report : store.list(query)) numbers.push_back(report->number);
  return numbers;
}

TEST(ReportStoreTest, NumbersReportsAndListsTheNewestFirst) {
  ReportStore store(10);
  EXPECT_EQ(numbersOf(store), Numbers{});
  for (const char* id : {"a", "b", "c"}) store.add(reportWith(id));
  EXPECT_EQ(numbersOf(store), (Numbers{3, 2, 1}));
  EXPECT_EQ(store.find(2)->identity.reportId, "b");
  EXPECT_EQ(store.find(4), nullptr);
}

TEST(ReportStoreTest, ListsAPage) {
  ReportStore store(10);
  for (int i = 1; i <= 6; ++i) store.add(reportWith("", i % 2 == 0 ? "even" : "odd"));
  EXPECT_EQ(numbersOf(store, {.limit = 2}), (Numbers{6, 5}));
  EXPECT_EQ(numbersOf(store, {.limit = 2, .before = 5}), (Numbers{4, 3}));
  EXPECT_EQ(numbersOf(store, {.before = 1}), Numbers{});
  EXPECT_EQ(numbersOf(store, {.customer = "odd"}), (Numbers{5, 3, 1}));
  EXPECT_EQ(numbersOf(store, {.limit = 1, .before = 5, .customer = "odd"}), Numbers{3});
  EXPECT_EQ(numbersOf(store, {.customer = "od"}), Numbers{});
}

TEST(ReportStoreTest, KeepsTheNewest) {
  ReportStore store(2);
  for (const char* id : {"a", "b", "c"}) store.add(reportWith(id));
  EXPECT_EQ(numbersOf(store), (Numbers{3, 2}));
  EXPECT_EQ(store.arrivals(), 3U);
}

TEST(ReportStoreTest, ADuplicateNamesTheFirstKeptOne) {
  ReportStore store(3);
  EXPECT_EQ(store.add(reportWith("a"))->duplicateOf, std::nullopt);
  EXPECT_EQ(store.add(reportWith("a"))->duplicateOf, 1U);
  EXPECT_EQ(store.add(reportWith("b"))->duplicateOf, std::nullopt);
  EXPECT_EQ(store.add(reportWith("a"))->duplicateOf, 1U);
  EXPECT_EQ(store.add(reportWith("a"))->duplicateOf, 2U) << "the first one had to go";
}

TEST(ReportStoreTest, ReportsWithoutAnIdAreNoDuplicates) {
  ReportStore store(3);
  store.add(reportWith(""));
  EXPECT_EQ(store.add(reportWith(""))->duplicateOf, std::nullopt);
  store.add({});
  EXPECT_EQ(store.add({})->duplicateOf, std::nullopt);
}

TEST(ReportStoreTest, RemovesOneOrAllAndNeverReusesANumber) {
  ReportStore store(5);
  for (const char* id : {"a", "b", "c"}) store.add(reportWith(id));
  EXPECT_TRUE(store.remove(1));
  EXPECT_FALSE(store.remove(1));
  EXPECT_EQ(store.add(reportWith("a"))->duplicateOf, std::nullopt);
  EXPECT_EQ(store.arrivals(), 4U);
  EXPECT_EQ(store.clear(), 3U);
  EXPECT_EQ(store.arrivals(), 0U);
  EXPECT_EQ(store.add(reportWith("a"))->number, 5U);
}

TEST(ReportStoreTest, WaitsForReports) {
  ReportStore store(5);
  EXPECT_TRUE(store.waitForArrivals(0, milliseconds(0)));
  EXPECT_FALSE(store.waitForArrivals(1, milliseconds(1)));
  std::thread adding([&store] {
    store.add({});
    store.add({});
  });
  EXPECT_TRUE(store.waitForArrivals(2, milliseconds(60'000)));
  adding.join();
}

}  // namespace
