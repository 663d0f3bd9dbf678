#include <map>
#include <set>

#include "tools/common/manual/Completion.h"

namespace zt::manual {

namespace {

std::string joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> namesOf(const std::vector<Option>& options) {
  std::vector<std::string> names;
  for (const Option& option : options) {
    if (!option.isArgument) names.push_back(option.name);
  }
  return names;
}

bool takesFile(const Program& program, const Command& command) {
  for (const Option& option : command.options) {
    if (option.isArgument && valuesOf(program, option) == Values::Files) return true;
  }
  return false;
}

/// How the value of an option is completed; the same name means the same in every command.
std::string valueAction(const Program& program, const Option& option) {
  switch (valuesOf(program, option)) {
    case Values::Files:
      return "_" + program.name + "_files -f";
    case Values::Folders:
      return "_" + program.name + "_files -d";
    case Values::Words:
      return "_" + program.name + "_words '" + joined(program.words.at(option.type), " ") + "'";
    default:
      return "COMPREPLY=()";
  }
}

/// The options that take a value, by what completes it.
std::map<std::string, std::set<std::string>> valueOptions(const Program& program) {
  std::map<std::string, std::set<std::string>> result;
  const auto add = [&](const std::vector<Option>& options) {
    for (const Option& option : options) {
      if (option.isArgument || option.type.empty()) continue;
      result[valueAction(program, option)].insert(option.name);
    }
  };
  add(program.options);
  for (const Command& command : program.commands) add(command.options);
  return result;
}

std::string pattern(const std::set<std::string>& names) {
  return joined({names.begin(), names.end()}, " | ");
}

}  // namespace

std::string bashCompletion(const Program& program) {
  const std::string function = "_" + program.name;
  std::set<std::string> withValue;
  for (const auto& [action, names] : valueOptions(program)) {
    withValue.insert(names.begin(), names.end());
  }
  std::string text =
      "# bash completion for " + program.name + "(1)\n\n" + function +
      "_words() {\n  mapfile -t COMPREPLY < <(compgen -W \"$1\" -- \"$current\")\n}\n\n" +
      function +
      "_files() {\n  compopt -o filenames 2>/dev/null\n"
      "  mapfile -t COMPREPLY < <(compgen \"$1\" -- \"$current\")\n}\n\n" +
      function +
      "() {\n"
      "  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n"
      "  local command= i\n"
      "  # bash takes --option=value for three words.\n"
      "  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD-2]}\n"
      "  [[ $current == = ]] && current=\n"
      "  COMPREPLY=()\n"
      "  case $before in\n";
  for (const auto& [action, names] : valueOptions(program)) {
    text += "    " + pattern(names) + ") " + action + "; return ;;\n";
  }
  text += "  esac\n";
  if (program.commands.empty()) {
    text += "  " + function + "_words '" + joined(namesOf(program.options), " ") + "'\n";
  } else {
    std::vector<std::string> commands;
    for (const Command& command : program.commands) commands.push_back(command.name);
    text += "  for ((i = 1; i < COMP_CWORD; i++)); do\n    case ${COMP_WORDS[i]} in\n      " +
            pattern(withValue) + ") [[ ${COMP_WORDS[i+1]} == = ]] && ((i++)); ((i++)) ;;\n      " +
            joined(commands, " | ") +
            ") command=${COMP_WORDS[i]}; break ;;\n    esac\n  done\n  case $command in\n";
    for (const Command& command : program.commands) {
      std::vector<std::string> words = namesOf(command.options);
      for (const std::string& name : namesOf(program.options)) {
        if (name != "--help") words.push_back(name);
      }
      text += "    " + command.name + ")\n";
      if (takesFile(program, command)) {
        text += "      [[ $current == -* ]] || { " + function + "_files -f; return; }\n";
      }
      text += "      " + function + "_words '" + joined(words, " ") + "'\n      ;;\n";
    }
    text += "    *) " + function + "_words '" + joined(commands, " ") + " " +
            joined(namesOf(program.options), " ") + "' ;;\n  esac\n";
  }
  return text + "}\n\ncomplete -F " + function + " " + program.name + "\n";
}

}  // namespace zt::manual
