#include "tools/common/manual/Program.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace zt::manual {

namespace {

Option optionOf(const CLI::Option& option) {
  Option result;
  result.isArgument = option.get_positional();
  result.name = option.get_name(result.isArgument);
  result.help = option.get_description();
  result.isRequired = option.get_required();
  if (option.get_items_expected_max() > 0) {
    result.type = option.get_type_name();
    result.defaultValue = option.get_default_str();
    result.isRepeatable = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
  }
  return result;
}

/// Those of the groups in `app` as well, which are nameless commands.
void addOptions(std::vector<Option>& options, const CLI::App& app) {
  const bool isChoice = app.get_require_option_min() == 1 && app.get_require_option_max() == 1;
  for (const CLI::Option* option : app.get_options()) {
    Option added = optionOf(*option);
    if (isChoice) added.alternatives = app.get_group();
    // A group has a --help of its own.
    if (!std::ranges::count(options, added.name, &Option::name)) options.push_back(added);
  }
  for (const CLI::App* group : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (group->get_name().empty()) addOptions(options, *group);
  }
}

}  // namespace

Program describe(const CLI::App& app, const std::string& version) {
  Program program;
  program.name = app.get_name();
  program.version = version;
  program.help = app.get_description();
  addOptions(program.options, app);
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_name().empty()) continue;
    Command described{command->get_name(), command->get_description(), {}};
    addOptions(described.options, *command);
    program.commands.push_back(std::move(described));
  }
  return program;
}

Values valuesOf(const Program& program, const Option& option) {
  if (program.words.contains(option.type)) return Values::Words;
  if (option.type == "FILE" || (option.isArgument && option.name == "FILE")) return Values::Files;
  return option.type == "DIR" ? Values::Folders : Values::None;
}

}  // namespace zt::manual
