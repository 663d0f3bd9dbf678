// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/integration/ztreport/ReportProgram.h"
#include "tests/support/Inbox.h"

// What `ztreport resend` and `store` do beyond the first report that is not accepted.

namespace zt::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ResendTest : public testing::Test {
 protected:
  /// Adds a file to the store, as of an hour ago.
  void save(const std::string& name, const std::string& content, int hours = 1) const {
    const std::string file = program.write("data/Kelvane/ztreport/reports/" + name, content);
    std::filesystem::last_write_time(
        file, std::filesystem::file_time_type::clock::now() - std::chrono::hours(hours));
  }
  /// The text of a report that can be sent.
  std::string report() const {
    return program.run({"render", program.write("report.json", describedFlatReport())}).output;
  }
  Finished resend(std::vector<std::string> options) const {
    options.insert(options.begin(), {"resend", "--config-url", inbox.configurationUrl()});
    return program.run(options);
  }
  std::string message(const std::string& name, const std::string& reason) const {
    return "ztreport: " + program.storeFolder() + "/" + name + ": not sent: " + reason + "\n";
  }
  std::vector<std::string> filesIn(const std::string& folder) const {
    std::vector<std::string> names;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(
             program.path("data/Kelvane/ztreport/" + folder), none)) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  Inbox inbox;
  ReportProgram program;
};

const std::string kMismatch = "line 1, column 4: Opening and ending tag mismatch: a line 1 and b";

TEST_F(ResendTest, SkipsWhatCannotBeSent) {
  save("1.ztr", "<a></b>");
  save("2.ztr", report());
  EXPECT_EQ(resend({"--skip-unsendable"}),
            (Finished{1, "1 sent, 0 set aside, 1 left\n", message("1.ztr", kMismatch)}));
  EXPECT_THAT(program.stored(), ElementsAre("1.ztr"));
}

TEST_F(ResendTest, SetsAsideWhatIsNotAcceptedFiveTimes) {
  save("1.ztr", "<a></b>");
  for (int i = 0; i < 4; ++i) resend({"--skip-unsendable", "--quiet"});
  EXPECT_EQ(resend({"--skip-unsendable"}),
            (Finished{1, "0 sent, 1 set aside, 0 left\n", message("1.ztr", kMismatch)}));
  EXPECT_THAT(filesIn("unsendable"), ElementsAre("1.ztr"));
  EXPECT_EQ(resend({"--skip-unsendable"}), done("0 sent, 0 set aside, 0 left\n"));
}

TEST_F(ResendTest, TriesAgainUntilTheServerAcceptsTheReport) {
  inbox.behave(R"({"answer": "accept", "scenario": [{"answer": "refuse"}, {"answer": "accept"}]})");
  save("1.ztr", report());
  EXPECT_EQ(resend({"--retry"}), done("1 sent, 0 set aside, 0 left\n"));
}

TEST_F(ResendTest, SaysWhyItEnds) {
  save("1.ztr", report());
  EXPECT_EQ(
      program.run({"resend", "--skip-unsendable", "--config-url", "http://127.0.0.1:1/"}),
      (Finished{1, "0 sent, 0 set aside, 1 left\n", "ztreport: the server cannot be reached\n"}));
  inbox.behave(R"({"answer": "accept", "scenario": [{"answer": "error:503"}]})");
  const Finished deferred = resend({"--skip-unsendable"});
  EXPECT_EQ(deferred.output, "0 sent, 0 set aside, 1 left\n");
  EXPECT_THAT(deferred.errors, HasSubstr("ztreport: the server asks to try again later"));
}

TEST_F(ResendTest, TriesSoManyReportsAtMost) {
  for (const char* name : {"1.ztr", "2.ztr", "3.ztr", "4.ztr"}) save(name, report());
  EXPECT_EQ(resend({"--limit", "1"}), (Finished{1, "1 sent, 3 left\n", ""}));
  EXPECT_EQ(resend({"--limit", "2", "--skip-unsendable"}),
            (Finished{1, "2 sent, 0 set aside, 1 left\n", ""}));
  EXPECT_EQ(resend({"--limit", "2"}), done("1 sent, 0 left\n"));
}

TEST_F(ResendTest, PrintsTheReceiptOfEachDelivery) {
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{"--receipts"}, {"--receipts", "--skip-unsendable"}}) {
    save("1.ztr", report());
    const json told = json::parse(resend(options).output);
    EXPECT_EQ(told.at("sent"), 1);
    ASSERT_EQ(told.at("deliveries").size(), 1U);
    const json& delivery = told.at("deliveries").at(0);
    EXPECT_EQ(delivery.at("file"), program.storeFolder() + "/1.ztr");
    EXPECT_EQ(delivery.at("delivery").at("outcome"), "accepted");
    EXPECT_EQ(delivery.at("delivery").at("httpStatus"), 200);
    EXPECT_EQ(delivery.at("delivery").at("url"), inbox.url() + "/soap");
  }
}

TEST_F(ResendTest, SendAndRunPrintTheirReceipt) {
  inbox.behave(R"({"answer": "error:500"})");
  const std::string file = program.write("report.json", describedFlatReport());
  const json told = json::parse(
      program.run({"send", file, "--receipts", "--config-url", inbox.configurationUrl()}).output);
  EXPECT_EQ(told.at("accepted"), false);
  const json& delivery = told.at("delivery");
  EXPECT_EQ(delivery.at("outcome"), "refused");
  EXPECT_EQ(delivery.at("error"), "status");
  EXPECT_EQ(delivery.at("message"), "The server responded with HTTP status 500.");
  EXPECT_EQ(delivery.at("savedTo"), told.at("file"));
  EXPECT_EQ(delivery.at("saveErrorNumber"), 0);

  program.setVariable("http_proxy=" + inbox.url());
  const json run = json::parse(program.run({"run", "--customer", "Kelvane", "--receipts"}).output);
  EXPECT_EQ(run.at("delivery").at("outcome"), "refused");
}

TEST_F(ResendTest, PurgesTheStore) {
  save("new.ztr", report());
  save("old.ztr", report(), 24 * 8);
  save("../unsendable/older.ztr", "<a>", 24 * 9);
  EXPECT_EQ(program.run({"store", "--purge"}), done("3 removed\n"));
  EXPECT_THAT(program.stored(), IsEmpty());
  EXPECT_THAT(filesIn("unsendable"), IsEmpty());
  save("new.ztr", report());
  EXPECT_EQ(json::parse(program.run({"store", "--purge", "--json"}).output),
            (json{{"removed", 1}}));
  EXPECT_THAT(program.stored(), IsEmpty());
  EXPECT_EQ(program.run({"store", "--purge", "--set-aside", "x"}).status, 2);
}

// The log was nowhere to be seen without writing a host.
TEST_F(ResendTest, PrintsTheLogIfAsked) {
  const std::string file = program.write("report.json", describedFlatReport());
  const Finished sent = program.run({"send", file, "-v", "--config-url", inbox.configurationUrl()});
  EXPECT_THAT(sent.output, HasSubstr("accepted: "));
  EXPECT_THAT(sent.errors,
              HasSubstr("ztportal: info: report: accepted by " + inbox.url() + "/soap\n"));
  EXPECT_EQ(program.run({"send", file, "--config-url", inbox.configurationUrl()}).errors, "");
  EXPECT_THAT(program.run({"-v", "save", file}).errors,
              HasSubstr("ztportal: info: store: saved in "));
}

}  // namespace
}  // namespace zt::test
