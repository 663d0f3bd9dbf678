#include <string_view>

#include "tools/common/manual/Completion.h"

namespace zt::manual {

namespace {

std::string quoted(std::string_view text) {
  std::string result = "'";
  for (const char letter : text) {
    if (letter == '\'' || letter == '\\') result += '\\';
    result += letter;
  }
  return result + "'";
}

/// What follows an option's name.
std::string values(const Program& program, const Option& option) {
  if (option.type.empty()) return "";
  switch (valuesOf(program, option)) {
    case Values::Files:
      return " -r -F";
    case Values::Folders:
      return " -x -a '(__fish_complete_directories)'";
    case Values::Words: {
      std::string words;
      for (const std::string& word : program.words.at(option.type)) {
        words += (words.empty() ? "" : " ") + word;
      }
      return " -x -a " + quoted(words);
    }
    default:
      return " -x";
  }
}

void addOptions(std::string& text, const Program& program, const std::vector<Option>& options,
                const std::string& start) {
  for (const Option& option : options) {
    if (!option.isArgument) {
      text += start + " -l " + option.name.substr(2) + values(program, option) + " -d " +
              quoted(option.help) + "\n";
    } else if (valuesOf(program, option) == Values::Files) {
      text += start + " -F\n";
    }
  }
}

}  // namespace

std::string fishCompletion(const Program& program) {
  const std::string start = "complete -c " + program.name;
  std::string text = "# fish completion for " + program.name + "(1)\n" + start + " -f\n";
  addOptions(text, program, program.options, start);
  for (const Command& command : program.commands) {
    text += start + " -n __fish_use_subcommand -a " + command.name + " -d " + quoted(command.help) +
            "\n";
    std::vector<Option> own;
    for (const Option& option : command.options) {
      if (option.name != "--help") own.push_back(option);
    }
    addOptions(text, program, own,
               start + " -n '__fish_seen_subcommand_from " + command.name + "'");
  }
  return text;
}

}  // namespace zt::manual
