#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztreport/Failure.h"
#include "tools/ztreport/commands/Run.h"

namespace CLI {
class App;
}

namespace zt::tools {

/// The command line: every command with its options, and what they were set to. The help, the
/// manual page and the shells' completions are all made from its `app`.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
  ~CommandLine();

  const CLI::App& app() const { return *_app; }
  /// What the values can be whose type in the help is the key.
  static std::map<std::string, std::vector<std::string>> words();

  /// Does what the arguments ask for. Raises `Failure`.
  Exit run(int argc, const char* const* argv);

 private:
  CLI::App* add(const char* name, const char* help, std::function<Exit()> action);
  void takeDescription(CLI::App& command);
  void takeServer(CLI::App& command, const char* whose);
  void addReports();
  void addRun();
  void addStore();
  void addShow();
  void addMachine();
  std::string serverUrl() const;

  std::unique_ptr<CLI::App> _app;
  std::function<Exit()> _command;
  std::string _appName;
  std::string _appVersion;
  std::string _file;
  std::string _configurationUrl;
  std::optional<std::string> _customer;
  std::optional<std::string> _setAside;
  bool _plain = false;
  bool _json = false;
  RunOptions _run;
};

}  // namespace zt::tools
