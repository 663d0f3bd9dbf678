#include <algorithm>
#include <cctype>

#include "tools/common/manual/ManualPage.h"

// What stands on the pages of the programs and of the library.

namespace zt::manual {

namespace {

std::string sentence(std::string text) {
  if (!text.ends_with('.')) text += '.';
  return text;
}

/// "--fact TEXT": as it is typed.
std::string typed(const Option& option) {
  return option.type.empty() || option.isArgument ? option.name : option.name + " " + option.type;
}

std::string inUsage(const Option& option) {
  std::string text = typed(option);
  if (!option.isRequired) text = "[" + text + "]";
  return option.isRepeatable ? text + "..." : text;
}

/// Help and version, which every command has, are told once.
bool isOfEveryCommand(const Option& option) {
  return option.name == "--help" || option.name == "--version";
}

std::string usageOf(const std::vector<Option>& options) {
  std::string choice;
  std::string others;
  std::string arguments;
  for (const Option& option : options) {
    if (isOfEveryCommand(option)) continue;
    if (!option.alternatives.empty()) {
      choice += (choice.empty() ? "" : " | ") + typed(option);
    } else {
      (option.isArgument ? arguments : others) += " " + inUsage(option);
    }
  }
  if (!choice.empty()) choice = " (" + choice + ")";
  return choice + others + arguments;
}

void tellOptions(ManualPage& page, const std::vector<Option>& options) {
  for (const Option& option : options) {
    std::string help = option.help;
    if (!option.defaultValue.empty()) help += " (default: " + option.defaultValue + ")";
    page.entry(option.name, option.isArgument ? "" : option.type, sentence(help));
  }
}

std::string withSmallFirst(std::string text) {
  if (!text.empty()) {
    text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  }
  if (text.ends_with('.')) text.pop_back();
  return text;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1);
    lines.emplace_back(text.substr(0, text[end] == '\n' ? end : end + 1));
    text.remove_prefix(end + 1);
  }
  return lines;
}

}  // namespace

std::string programPage(const Program& program) {
  ManualPage page(program.name, 1, "ztportal " + program.version, withSmallFirst(program.help));
  page.section("SYNOPSIS");
  if (program.commands.empty()) page.usage(program.name, usageOf(program.options));
  for (const Command& command : program.commands) {
    page.usage(program.name + " " + command.name, usageOf(command.options));
  }
  for (const Note& note : program.notes) {
    if (note.heading != "DESCRIPTION") continue;
    page.section(note.heading);
    page.text(note.text);
  }
  if (!program.commands.empty()) page.section("COMMANDS");
  for (const Command& command : program.commands) {
    page.subsection(command.name);
    page.text(sentence(command.help));
    std::vector<Option> own;
    std::ranges::remove_copy_if(command.options, std::back_inserter(own), isOfEveryCommand);
    tellOptions(page, own);
  }
  page.section("OPTIONS");
  tellOptions(page, program.options);
  for (const Note& note : program.notes) {
    if (note.heading == "DESCRIPTION") continue;
    page.section(note.heading);
    page.text(note.text);
  }
  return page.page();
}

std::string libraryPage(std::string_view header, const std::string& version) {
  constexpr std::string_view kComment = "///";
  constexpr std::string_view kInclude = "#include ";
  std::string purpose;
  std::string description;
  std::string headers;
  for (const std::string& line : linesOf(header)) {
    if (line.starts_with(kComment)) {
      const std::string text = line.substr(std::min(kComment.size() + 1, line.size()));
      if (purpose.empty()) {
        purpose = text;
      } else {
        description += text + "\n";
      }
    } else if (line.starts_with(kInclude)) {
      const std::string name = line.substr(kInclude.size() + 1, line.size() - kInclude.size() - 2);
      headers += "    <" + name + ">\n";
    }
  }
  ManualPage page("ztportal", 3, "ztportal " + version, withSmallFirst(purpose));
  page.section("SYNOPSIS");
  page.text(
      "    #include <ztportal/ztportal.h>\n\n    c++ -std=c++20 host.cpp $(pkg-config --cflags "
      "--libs ztportal)\n");
  page.section("DESCRIPTION");
  page.text(description);
  page.section("HEADERS");
  page.text("Each class has a header of its own, whose comments are its reference:\n" + headers);
  page.section("SEE ALSO");
  page.text("ztreport(1), ztinbox(1)\n");
  return page.page();
}

}  // namespace zt::manual
