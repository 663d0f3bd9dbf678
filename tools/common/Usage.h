// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace zt {

/// The message for wrong usage of a program: what is wrong, the nearest valid word, and where the
/// help is.
///
///     no such command: reder (did you mean render?); see ztreport --help
std::string usageMessage(const CLI::App& app, const CLI::ParseError& error);

/// "; see ztreport send --help": the help of the command that was given, or of the program.
std::string seeHelp(const CLI::App& app);

/// " (did you mean Kelvane?)" with the candidate that is most like `word`; empty when none is. A
/// candidate that begins with the word is, and so is one that differs in a third of its letters at
/// most, upper and lower case aside.
std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace zt
