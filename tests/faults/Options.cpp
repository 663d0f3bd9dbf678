#include "tests/faults/Options.h"

#include <CLI/CLI.hpp>
#include <vector>

namespace zt::torture {

std::optional<Options> readOptions(int count, char** words, int& status) {
  Options options;
  std::vector<std::string> campaigns;
  std::int64_t seconds = 0;
  CLI::App app(
      "Plays faults against the library until one of its promises breaks: of the server and the\n"
      "network (delivery), of every system call (faults), and the end of the process (kills).\n"
      "The same seed plays the same faults.",
      "script/torture");
  app.set_help_flag("--help", "Print this help and exit");
  app.add_option("CAMPAIGN", campaigns, "delivery, faults, kills; all without one")
      ->check(CLI::IsMember(options.campaigns));
  app.add_option("--seed", options.seed, "What the faults follow from")->capture_default_str();
  app.add_option("--seconds", seconds,
                 "About how long all of it takes: parts of each campaign, in the order that the "
                 "seed gives; without this everything is played once")
      ->check(CLI::PositiveNumber);
  app.add_option("--jobs", options.jobs, "Processes that share the work")
      ->check(CLI::Range(1, 64))
      ->capture_default_str();
  app.add_option("--reports", options.reports, "How many reports delivery sends")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  app.add_option("--first", options.first, "Number of the first of them, to repeat one")
      ->capture_default_str();
  app.add_option("--kills", options.kills, "How often kills ends a process at a random moment")
      ->capture_default_str();
  try {
    app.parse(count, words);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? 0 : 2;
    return std::nullopt;
  }
  if (!campaigns.empty()) options.campaigns = {campaigns.begin(), campaigns.end()};
  if (seconds > 0) options.time = std::chrono::seconds(seconds);
  return options;
}

}  // namespace zt::torture
