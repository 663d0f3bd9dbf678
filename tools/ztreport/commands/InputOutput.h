// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

#include "ztportal/platform/json/Json.h"

namespace zt::tools {

/// Exit status of the program.
enum class Exit {
  Done = 0,
  NotAccepted = 1,    ///< and saved instead; reports are left in the store; a check failed
  WrongInput = 2,     ///< wrong usage or a wrong description
  MachineFailed = 3,  ///< a file cannot be read or written, or there is no session bus
};

/// Ends a command with a message on standard error and an exit status.
class Failure : public std::runtime_error {
 public:
  Failure(Exit exit, const std::string& message) : std::runtime_error(message), _exit(exit) {}

  Exit exit() const { return _exit; }

 private:
  Exit _exit;
};

/// Wrong usage of the command line. The program adds where the help is.
class WrongUsage : public Failure {
 public:
  explicit WrongUsage(const std::string& message) : Failure(Exit::WrongInput, message) {}
};

/// How a command tells what it did.
enum class Output {
  Words,
  Json,      ///< one object
  Receipts,  ///< the same, with the receipt of each delivery
  Quiet,     ///< not at all
};

/// Name of a file in messages: its path, or "standard input" for "-".
std::string nameOf(const std::string& file);

/// The content of a file, or of standard input for "-". Throws a `Failure` that names the file.
std::string readAll(const std::string& file);

/// Writes to standard output and flushes. Throws a `Failure` on an error.
void print(const std::string& text);

/// Prints a line of words, or the object that says the same, or nothing.
void tell(Output output, const std::string& words, const Json& object);

/// Writes "ztreport: MESSAGE" to standard error, safe for a terminal.
void complain(const std::string& message);

}  // namespace zt::tools
