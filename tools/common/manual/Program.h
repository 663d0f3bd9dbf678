#pragma once

#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zt::manual {

/// An option, or an argument without a name.
struct Option {
  std::string name;          ///< "--plain", or "FILE" for an argument
  std::string type;          ///< of its value; empty for one without a value
  std::string defaultValue;  ///< empty when there is none
  std::string help;
  bool isArgument = false;
  bool isRequired = false;
  bool isRepeatable = false;
  std::string alternatives;  ///< one option of those with the same text here has to be given
};

struct Command {
  std::string name;
  std::string help;
  std::vector<Option> options;
};

/// A section of a manual page that `--help` has no room for. A line that begins with four blanks
/// is an example; a line "- term: text" an entry of a list; an empty line ends a paragraph.
struct Note {
  std::string heading;
  std::string text;
};

/// A program's command line, as its manual page and its completions tell it.
struct Program {
  std::string name;
  std::string version;
  std::string help;
  std::vector<Option> options;                            ///< of every command
  std::vector<Command> commands;                          ///< none for a program without commands
  std::map<std::string, std::vector<std::string>> words;  ///< the values of a type
  std::vector<Note> notes;
};

/// What `--help` is made of, without words and notes.
Program describe(const CLI::App& app, const std::string& version);

/// How a value is completed.
enum class Values { None, Files, Folders, Words };
Values valuesOf(const Program& program, const Option& option);

}  // namespace zt::manual
