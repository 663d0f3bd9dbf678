#pragma once

#include <stdexcept>
#include <string>

namespace zt::tools {

/// How a command ends, as the shell sees it.
enum class Exit {
  Done = 0,
  NotAccepted = 1,    ///< and saved instead; something is left in the store; a check failed
  WrongInput = 2,     ///< usage or description
  MachineFailed = 3,  ///< a file cannot be read or written, or there is no session bus
};

/// Ends a command: what goes to standard error behind "ztreport: ", and the exit status.
class Failure : public std::runtime_error {
 public:
  Failure(Exit exit, const std::string& message) : std::runtime_error(message), _exit(exit) {}

  Exit exit() const { return _exit; }

 private:
  Exit _exit;
};

}  // namespace zt::tools
