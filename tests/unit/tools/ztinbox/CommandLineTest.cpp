// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/ztinbox/CommandLine.h"
#include "tools/ztinbox/Fault.h"

namespace {

using zt::inbox::AnswerKind;
using zt::inbox::CommandLine;
using zt::test::ScopedEnvironment;

CommandLine read(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "ztinbox");
  return zt::inbox::readCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

std::string inputFaultOf(const std::vector<const char*>& arguments) {
  try {
    read(arguments);
    return "";
  } catch (const zt::inbox::InputFault& fault) {
    return fault.what();
  }
}

/// A file with the given text, removed with its scope.
class TextFile {
 public:
  explicit TextFile(const std::string& text) : _path(_folder.write("file", text)) {}

  const char* path() const { return _path.c_str(); }

 private:
  const zt::test::TemporaryFolder _folder;
  const std::string _path;
};

TEST(CommandLineTest, HasADefaultForEverything) {
  const ScopedEnvironment data("XDG_DATA_HOME", "/data");
  const auto settings = read({}).settings;
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->dataFolder, "/data/ztinbox");
  EXPECT_EQ(settings->listen.text(), "127.0.0.1:8025");
  EXPECT_EQ(settings->mostReports, 10'000U);
  EXPECT_EQ(settings->behaviour, zt::inbox::BehaviourSettings{});
}

TEST(CommandLineTest, ADatabaseThatOthersShareKeepsAllUnlessALimitIsGiven) {
  const ScopedEnvironment home("HOME", nullptr);
  const ScopedEnvironment data("XDG_DATA_HOME", nullptr);
  const auto settings = read({"--store", "service=reports"}).settings;
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->store, "service=reports");
  EXPECT_EQ(settings->mostReports, std::numeric_limits<std::size_t>::max());
  EXPECT_EQ(read({"--store", "service=reports", "--max", "7"}).settings->mostReports, 7U);
  EXPECT_THROW(read({"--store", "service=reports", "--data", "/x"}), zt::inbox::InputFault);
}

TEST(CommandLineTest, ReadsEveryOption) {
  const TextFile scenario(R"([{"answer": "drop"}])");
  const auto settings =
      read({"--listen", "[::1]:0", "--data", "/somewhere", "--max", "5", "--answer", "error:404",
            "--slow", "30", "--fail-rate", "0.5", "--seed", "9", "--scenario", scenario.path()})
          .settings;
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->listen.text(), "[::1]:0");
  EXPECT_EQ(settings->dataFolder, "/somewhere");
  EXPECT_EQ(settings->mostReports, 5U);
  EXPECT_EQ(settings->behaviour.answer, (zt::inbox::Answer{AnswerKind::kError, 404}));
  EXPECT_EQ(settings->behaviour.slow, std::chrono::milliseconds(30));
  EXPECT_EQ(settings->behaviour.failRate, 0.5);
  EXPECT_EQ(settings->behaviour.seed, 9U);
  ASSERT_EQ(settings->behaviour.scenario.size(), 1U);
  EXPECT_EQ(settings->behaviour.scenario[0].answer.kind, AnswerKind::kDrop);
}

TEST(CommandLineTest, ExplainsWrongUsage) {
  const TextFile wrongStep(R"([{"answer": "accept"}, {"answer": "drop", "times": -1}])");
  const std::string stepFault =
      std::string(wrongStep.path()) + ": /1/times: must be a whole number from 1 to 1000000000";
  const TextFile noJson("answer");
  const std::string jsonFault = std::string(noJson.path()) + ": not JSON (at byte 1)";
  const std::string listenFault = "--listen must be ADDRESS:PORT, such as 127.0.0.1:8025";
  const std::string rateFault = "--fail-rate must be a number from 0 to 1";
  const struct {
    std::vector<const char*> arguments;
    std::string message;
  } rows[] = {
      {{"--listen", "8025"}, listenFault},
      {{"--listen", "example.org:80"}, listenFault},
      {{"--listen", "127.0.0.1:65536"}, listenFault},
      {{"--answer", "maybe"},
       "--answer must be accept, refuse, garbage, error:STATUS (200 to 599), hang, drop or "
       "truncate"},
      {{"--max", "0"}, "--max must be a whole number from 1 to 1000000"},
      {{"--max", "1x"}, "--max must be a whole number from 1 to 1000000"},
      {{"--slow", "-1"}, "--slow must be a whole number from 0 to 3600000"},
      {{"--seed", "1.5"}, "--seed must be a whole number from 0 to 18446744073709551615"},
      {{"--fail-rate", "2"}, rateFault},
      {{"--fail-rate", "nan"}, rateFault},
      {{"--fail-rate", ""}, rateFault},
      {{"--scenario", wrongStep.path()}, stepFault},
      {{"--scenario", noJson.path()}, jsonFault},
      {{"--data"}, "--data: 1 required DIR missing; see ztinbox --help"},
      {{"--data", ""}, "--data must name a folder"},
      {{"file"}, "The following argument was not expected: file; see ztinbox --help"},
      {{"--lisen"},
       "The following argument was not expected: --lisen (did you mean --listen?); see ztinbox "
       "--help"},
      {{"--max"}, "--max: 1 required N missing; see ztinbox --help"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(inputFaultOf(row.arguments), row.message) << row.arguments.front();
  }
}

TEST(CommandLineTest, AScenarioFileThatCannotBeReadIsTheMachinesFault) {
  try {
    read({"--scenario", "/nowhere/scenario.json"});
    FAIL() << "read a file that does not exist";
  } catch (const zt::inbox::MachineFault& fault) {
    EXPECT_STREQ(fault.what(), "cannot read /nowhere/scenario.json: No such file or directory");
  }
  try {
    read({"--scenario", "/"});
    FAIL() << "read a folder";
  } catch (const zt::inbox::MachineFault& fault) {
    EXPECT_STREQ(fault.what(), "cannot read /: Is a directory");
  }
}

}  // namespace
