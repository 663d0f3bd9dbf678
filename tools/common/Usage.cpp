// SPDX-License-Identifier: Apache-2.0
#include "tools/common/Usage.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cstddef>

namespace zt {

namespace {

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](unsigned char letter) {
    return static_cast<char>(std::tolower(letter));
  });
  return lower;
}

/// How many letters must be added, removed or replaced (the Levenshtein distance).
std::size_t distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t i = 0; i < row.size(); ++i) row[i] = i;
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const std::size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

/// The command that was given, or the program without one.
const CLI::App& commandOf(const CLI::App& app) {
  const auto given = app.get_subcommands();
  return given.empty() ? app : *given.front();
}

void addOptions(const CLI::App& app, std::vector<std::string>& words) {
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
  }
}

/// The options or commands that are valid in place of `word`.
std::vector<std::string> validWords(const CLI::App& app, std::string_view word) {
  std::vector<std::string> words;
  const CLI::App& command = commandOf(app);
  if (word.starts_with('-')) {
    addOptions(command, words);
    if (&command != &app) addOptions(app, words);
  } else if (&command == &app) {
    for (const CLI::App* known :
         app.get_subcommands([](const CLI::App* /*any*/) { return true; })) {
      words.push_back(known->get_name());
    }
  }
  return words;
}

}  // namespace

std::string usageMessage(const CLI::App& app, const CLI::ParseError& error) {
  constexpr std::string_view kValueOfFlag = " was given a disallowed flag override";
  std::string message = error.what();
  if (message.ends_with(kValueOfFlag)) {
    message.resize(message.size() - kValueOfFlag.size());
    message = "--" + message + " takes no value";
  }
  const std::vector<std::string> unknown = app.remaining(true);
  if (!unknown.empty()) {
    const std::string word = unknown.front().substr(0, unknown.front().find('='));
    const std::vector<std::string> valid = validWords(app, word);
    if (!word.starts_with('-') && !valid.empty()) message = "no such command: " + word;
    message += didYouMean(word, valid);
  }
  return message + seeHelp(app);
}

std::string seeHelp(const CLI::App& app) {
  const CLI::App& command = commandOf(app);
  return "; see " + app.get_name() + (&command == &app ? "" : " " + command.get_name()) + " --help";
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kShortestBeginning = 2;
  const std::string wanted = lowerCase(word);
  const std::string* nearest = nullptr;
  std::size_t smallest = (word.size() + 2) / 3 + 1;
  for (const std::string& candidate : candidates) {
    const std::string known = lowerCase(candidate);
    const bool isBeginning = wanted.size() >= kShortestBeginning && known.starts_with(wanted) &&
                             wanted.find_first_not_of('-') != std::string::npos;
    const std::size_t away = isBeginning ? 1 : distance(wanted, known);
    if (away >= smallest) continue;
    smallest = away;
    nearest = &candidate;
  }
  return nearest == nullptr ? "" : " (did you mean " + *nearest + "?)";
}

}  // namespace zt
