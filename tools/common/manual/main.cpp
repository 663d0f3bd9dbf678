#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>

#include "tools/common/manual/Completion.h"
#include "tools/common/manual/ManualPage.h"
#include "tools/common/manual/Notes.h"
#include "tools/ztinbox/CommandLine.h"
#include "tools/ztinbox/faults/Behaviour.h"
#include "tools/ztreport/CommandLine.h"

// zt_manual FOLDER HEADER
//
// Writes the manual pages and the shells' completions into FOLDER; HEADER is the library's
// ztportal.h.

namespace {

using zt::manual::Program;

/// The words of a list such as "accept, drop or error:STATUS (200 to 599)", up to what varies.
std::vector<std::string> wordsOf(std::string_view list) {
  std::vector<std::string> words;
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find_first_of(", (", begin), list.size());
    std::string word(list.substr(begin, end - begin));
    if (word != "or" && !word.empty()) words.push_back(word.substr(0, word.find(':')));
    begin = end + 1;
    if (end < list.size() && list[end] == '(') begin = list.find(')', end) + 1;
  }
  return words;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write(const std::filesystem::path& path, const std::string& content) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file << content << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

void writeAll(const std::filesystem::path& folder, const Program& program) {
  write(folder / "man1" / (program.name + ".1"), programPage(program));
  write(folder / "bash" / program.name, bashCompletion(program));
  write(folder / "zsh" / ("_" + program.name), zshCompletion(program));
  write(folder / "fish" / (program.name + ".fish"), fishCompletion(program));
}

void run(const std::filesystem::path& folder, const std::string& header) {
  const zt::tools::CommandLine commandLine;
  Program report = zt::manual::describe(commandLine.app(), ZT_VERSION);
  report.words = zt::tools::CommandLine::words();
  report.notes = zt::manual::reportNotes();
  writeAll(folder, report);

  Program inbox = zt::manual::describe(*zt::inbox::commandLineApp(), ZT_VERSION);
  inbox.words = {{"WORD", wordsOf(zt::inbox::kAnswerWords)}};
  inbox.notes = zt::manual::inboxNotes();
  writeAll(folder, inbox);

  write(folder / "man3" / "ztportal.3", zt::manual::libraryPage(contentOf(header), ZT_VERSION));
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::runtime_error("usage: zt_manual FOLDER HEADER");
    run(argv[1], argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "zt_manual: " << error.what() << '\n';
    return 1;
  }
}
