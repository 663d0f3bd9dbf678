// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/Inbox.h"
#include "tests/support/Markdown.h"
#include "tests/support/Printing.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/plist/PropertyList.h"

// The code blocks in docs/: descriptions are rendered and compared with the texts that follow them,
// commands are run and their output is compared.

namespace zt::test {
namespace {

/// Report and machine IDs differ in each run. Translates between the IDs in a document's examples
/// and those of this run.
class Identities {
 public:
  /// `actual` with the IDs of the document; `expected` is the corresponding part of it.
  std::string asDocumented(std::string actual, const std::string& expected) {
    const std::vector<std::string> documented = newIn(expected, _actual);
    const std::vector<std::string> found = newIn(actual, _documented);
    for (std::size_t i = 0; i < std::min(documented.size(), found.size()); ++i) {
      _actual[documented[i]] = found[i];
      _documented[found[i]] = documented[i];
    }
    return replaced(std::move(actual), _documented);
  }
  /// A documented command with the IDs of this run.
  std::string asFound(std::string command) const { return replaced(std::move(command), _actual); }

 private:
  using Map = std::map<std::string, std::string>;

  static std::vector<std::string> newIn(const std::string& text, const Map& known) {
    static const std::regex kId("[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}");
    std::vector<std::string> ids;
    for (std::sregex_iterator found(text.begin(), text.end(), kId); found != std::sregex_iterator();
         ++found) {
      const std::string id = found->str();
      if (!known.contains(id) && std::ranges::find(ids, id) == ids.end()) ids.push_back(id);
    }
    return ids;
  }
  static std::string replaced(std::string text, const Map& map) {
    for (const auto& [before, after] : map) {
      for (std::size_t at = text.find(before); at != text.npos; at = text.find(before, at)) {
        text.replace(at, before.size(), after);
        at += after.size();
      }
    }
    return text;
  }

  Map _actual;
  Map _documented;
};

/// Runs the examples of a document from beginning to end.
class Reader {
 public:
  void read(const std::string& document) {
    for (const MarkdownBlock& block : markdownBlocks(document)) {
      SCOPED_TRACE(document + ":" + std::to_string(block.line));
      if (block.language == "json") {
        ASSERT_FALSE(block.name.empty()) << "a description needs a file name";
        _home.write(block.name, block.content);
        _description = block.name;
      } else if (block.language == "xml") {
        compare(block);
      } else if (block.language == "console") {
        follow(block);
      } else if (block.language != "cpp") {  // those of the headers are run with the headers
        ADD_FAILURE() << "nothing checks a block of \"" << block.language << "\"";
      }
      ++_count;
    }
  }

  int count() const { return _count; }

 private:
  /// Standard output and standard error of a command line.
  std::string run(const std::string& command) const {
    return runProgram(
               "/bin/bash", {"-c", "exec 2>&1; cd; " + command},
               {.environment =
                    std::vector<std::string>{
                        "HOME=" + _home.path(), "PATH=" + paths::kBuild + "/bin" + ":/usr/bin:/bin",
                        "TZ=Europe/Berlin", "LC_ALL=en_US.UTF-8", "http_proxy=" + _inbox.url(),
                        "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"}})
        .output;
  }

  void compare(const MarkdownBlock& block) {
    const bool isSoap = block.content.find("xsi:type") != std::string::npos;
    std::string text = run("ztreport render " + _description + (isSoap ? "" : " --plain"));
    std::erase(text, '\r');
    if (block.content.starts_with('<')) {
      EXPECT_EQ(_identities.asDocumented(text, block.content), block.content);
    } else {
      EXPECT_NE(text.find("\n" + block.content), std::string::npos) << text;
    }
  }

  void follow(const MarkdownBlock& block) {
    std::istringstream lines(block.content);
    std::string command;
    std::string expected;
    const auto check = [&] {
      if (command.empty()) return;
      std::string output = run(_identities.asFound(command));
      output = std::regex_replace(output, std::regex(_home.path()), "/home/ada");
      EXPECT_EQ(_identities.asDocumented(output, expected), expected) << command;
    };
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with("$ ")) {
        check();
        command = line.substr(2);
        expected.clear();
      } else {
        expected += line + "\n";
      }
    }
    check();
  }

  TemporaryFolder _home;
  Inbox _inbox;
  Identities _identities;
  std::string _description;
  int _count = 0;
};

TEST(DocumentExamplesTest, AreWhatTheProgramsPrint) {
  const std::pair<const char*, int> rows[] = {
      {"report-format", 3}, {"report-fields", 6},  {"reading-reports", 3},
      {"store", 2},         {"sending-again", 5},  {"privacy", 3},
      {"log", 2},           {"troubleshooting", 1}};
  for (const auto& [document, leastBlocks] : rows) {
    SCOPED_TRACE(document);
    Reader reader;
    reader.read(paths::kSource + "/docs/" + document + ".md");
    EXPECT_GE(reader.count(), leastBlocks) << "the blocks are not found";
  }
}

TEST(DocumentExamplesTest, OfTheNotification) {
  const auto blocks = markdownBlocks(paths::kSource + "/docs/notification.md");
  ASSERT_EQ(blocks.size(), 1U);
  ASSERT_EQ(blocks[0].language, "xml");
  const auto entries = zt::parsePropertyList(blocks[0].content);
  ASSERT_TRUE(entries.has_value());
  EXPECT_EQ(entries->at("ztTestMode"), "1");
}

}  // namespace
}  // namespace zt::test
