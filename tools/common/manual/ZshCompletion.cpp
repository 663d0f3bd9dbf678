#include <string_view>

#include "tools/common/manual/Completion.h"

namespace zt::manual {

namespace {

/// As a part of a description of `_arguments` (zshcompsys(1)), within single quotes.
std::string quoted(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    if (letter == '\'') {
      result += "'\\''";
      continue;
    }
    if (std::string_view("[]:\\").find(letter) != std::string_view::npos) result += '\\';
    result += letter;
  }
  return result;
}

std::string action(const Program& program, const Option& option) {
  switch (valuesOf(program, option)) {
    case Values::Files:
      return "_files";
    case Values::Folders:
      return "_files -/";
    case Values::Words: {
      std::string words;
      for (const std::string& word : program.words.at(option.type)) words += " " + quoted(word);
      return "(" + words.substr(1) + ")";
    }
    default:
      return " ";
  }
}

std::string argument(const Program& program, const Option& option) {
  if (option.isArgument) return "'1:" + quoted(option.name) + ":" + action(program, option) + "'";
  std::string text = option.isRepeatable ? "'*" : "'";
  text += option.name + (option.type.empty() ? "" : "=") + "[" + quoted(option.help) + "]";
  if (!option.type.empty()) text += ":" + quoted(option.type) + ":" + action(program, option);
  return text + "'";
}

void addArguments(std::string& text, const Program& program, const std::vector<Option>& options,
                  std::string_view indent) {
  for (const Option& option : options) {
    text.append(" \\\n").append(indent) += argument(program, option);
  }
}

/// Of a command: its own, and those of every command.
std::vector<Option> allOptions(const Program& program, const Command& command) {
  std::vector<Option> options = command.options;
  for (const Option& option : program.options) {
    if (option.name != "--help") options.push_back(option);
  }
  return options;
}

}  // namespace

std::string zshCompletion(const Program& program) {
  const std::string function = "_" + program.name;
  std::string text = "#compdef " + program.name + "\n\n" + function +
                     "() {\n  local context state state_descr line\n  typeset -A opt_args\n\n"
                     "  _arguments -S";
  if (!program.commands.empty()) text += " -C";
  addArguments(text, program, program.options, "    ");
  if (program.commands.empty()) return text + "\n}\n\n" + function + " \"$@\"\n";

  text +=
      " \\\n    '1:command:->command' \\\n    '*::argument:->argument' && return\n\n"
      "  case $state in\n    command)\n      local -a commands=(\n";
  for (const Command& command : program.commands) {
    text += "        '" + command.name + ":" + quoted(command.help) + "'\n";
  }
  text +=
      "      )\n      _describe -t commands command commands\n      ;;\n    argument)\n"
      "      case $words[1] in\n";
  for (const Command& command : program.commands) {
    text += "        " + command.name + ")\n          _arguments -S";
    addArguments(text, program, allOptions(program, command), "            ");
    text += "\n          ;;\n";
  }
  return text + "      esac\n      ;;\n  esac\n}\n\n" + function + " \"$@\"\n";
}

}  // namespace zt::manual
