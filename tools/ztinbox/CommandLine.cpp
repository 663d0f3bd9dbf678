// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/CommandLine.h"

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "tools/common/Usage.h"
#include "tools/ztinbox/Fault.h"
#include "tools/ztinbox/Version.h"
#include "tools/ztinbox/faults/BehaviourJson.h"
#include "tools/ztinbox/store/DataFolder.h"
#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

constexpr std::uint64_t kMostKept = 1'000'000;

/// The values of the options, unparsed.
struct Arguments {
  std::string listen = "127.0.0.1:8025";
  std::optional<std::string> data;
  std::string store;
  std::optional<std::string> most;
  std::string answer = "accept";
  std::string slow = "0";
  std::string failRate = "0";
  std::string seed = "0";
  std::string scenario;
};

constexpr const char* kPurpose =
    "A reporting server for this machine: receives reports, shows them, and fails on request.";

/// An option whose value --help names `type`.
template <class Value>
CLI::Option* addValue(CLI::App& app, const char* name, const char* type, Value& value,
                      const char* help) {
  return app.add_option(name, value, help)->type_name(type);
}

void addOptions(CLI::App& app, Arguments& arguments) {
  app.set_version_flag("--version", kNameAndVersion, "Print the version and exit");
  app.option_defaults()->always_capture_default();
  addValue(app, "--listen", "ADDRESS:PORT", arguments.listen,
           "Listen at this address; port 0 selects a free port");
  addValue(app, "--data", "DIR", arguments.data,
           "Folder of the stored reports (default: ztinbox in the user's data folder)");
  addValue(app, "--store", "URL", arguments.store,
           "PostgreSQL database for the reports instead, which several inboxes may share: "
           "postgresql://USER@HOST/NAME or service=NAME");
  addValue(app, "--max", "N", arguments.most,
           "Keep only the newest N reports (default: 10000; with --store, all)");
  addValue(app, "--answer", "WORD", arguments.answer,
           "Answer to each report: accept, refuse, garbage, error:STATUS, hang, drop or truncate");
  addValue(app, "--slow", "MS", arguments.slow, "Delay before each answer, in milliseconds");
  addValue(app, "--fail-rate", "F", arguments.failRate,
           "Probability that a report gets a random fault, from 0 to 1");
  addValue(app, "--seed", "S", arguments.seed,
           "Seed of the random faults; the same seed repeats them");
  addValue(app, "--scenario", "FILE", arguments.scenario,
           "JSON list of answers to play in order, such as "
           R"([{"answer": "error:503", "times": 2}, {"answer": "accept"}])");
}

std::uint64_t readWhole(const char* option, std::string_view text, std::uint64_t least,
                        std::uint64_t most) {
  const auto number = parseNumber<std::uint64_t>(text);
  if (number && *number >= least && *number <= most) return *number;
  throw InputFault(std::string(option) + " must be a whole number from " + std::to_string(least) +
                   " to " + std::to_string(most));
}

double readRate(std::string_view text) {
  const auto rate = parseNumber<double>(text);
  if (rate && *rate >= 0 && *rate <= 1) return *rate;
  throw InputFault("--fail-rate must be a number from 0 to 1");
}

std::string readFile(const std::string& path) {
  const auto failed = [&path] {
    return MachineFault("cannot read " + path + ": " + std::strerror(errno));
  };
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             &std::fclose);
  if (!file) throw failed();
  std::string content;
  std::array<char, 4096> part{};
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), file.get())) {
    content.append(part.data(), count);
  }
  if (std::ferror(file.get()) != 0) throw failed();
  return content;
}

std::vector<ScenarioStep> readScenarioFile(const std::string& path) {
  const std::string content = readFile(path);
  try {
    return readScenario(content);
  } catch (const InputFault& fault) {
    throw InputFault(path + ": " + fault.what());
  }
}

InboxSettings readSettings(const Arguments& arguments) {
  const auto listen = parseListenAddress(arguments.listen);
  if (!listen) throw InputFault("--listen must be ADDRESS:PORT, such as 127.0.0.1:8025");
  const auto answer = parseAnswer(arguments.answer);
  if (!answer) throw InputFault("--answer must be " + std::string(kAnswerWords));

  InboxSettings settings;
  settings.listen = *listen;
  if (arguments.most) settings.mostReports = readWhole("--max", *arguments.most, 1, kMostKept);
  settings.behaviour.answer = *answer;
  const auto slowest = static_cast<std::uint64_t>(kSlowest.count());
  settings.behaviour.slow =
      std::chrono::milliseconds(readWhole("--slow", arguments.slow, 0, slowest));
  settings.behaviour.failRate = readRate(arguments.failRate);
  settings.behaviour.seed =
      readWhole("--seed", arguments.seed, 0, std::numeric_limits<std::uint64_t>::max());
  if (!arguments.scenario.empty()) {
    settings.behaviour.scenario = readScenarioFile(arguments.scenario);
  }
  if (arguments.data && arguments.data->empty()) throw InputFault("--data must name a folder");
  if (arguments.data && !arguments.store.empty()) {
    throw InputFault("--data and --store exclude each other");
  }
  settings.store = arguments.store;
  if (!settings.store.empty()) {
    if (!arguments.most) settings.mostReports = std::numeric_limits<std::size_t>::max();
  } else {
    settings.dataFolder = arguments.data ? *arguments.data : defaultDataFolder();
  }
  return settings;
}

}  // namespace

CommandLine readCommandLine(int argc, const char* const* argv) {
  CLI::App app(kPurpose, "ztinbox");
  Arguments arguments;
  addOptions(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {std::nullopt, app.help()};
  } catch (const CLI::CallForVersion& version) {
    return {std::nullopt, std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    throw InputFault(usageMessage(app, error));
  }
  return {readSettings(arguments), {}};
}

}  // namespace zt::inbox
