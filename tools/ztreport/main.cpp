// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <array>
#include <chrono>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/common/Usage.h"
#include "tools/ztreport/commands/Commands.h"
#include "ztportal/base/Text.h"
#include "ztportal/ztportal.h"

// The command line. The manual page and the completions are derived from its --help.

namespace zt::tools {

namespace {

/// The options as they were typed, and the command.
struct Arguments {
  std::string appName = "ztreport";
  std::string appVersion = ZTPORTAL_VERSION;
  std::string file;
  std::optional<std::string> customer;
  std::optional<std::string> configurationUrl;
  std::optional<std::string> setAside;
  std::string consent;
  bool deleteStored = false;
  bool escape = false;
  bool plain = false;
  bool json = false;
  bool quiet = false;
  bool logs = false;
  bool receipts = false;
  bool purge = false;
  RunOptions run;
  ResendOptions resend;
  ZtTransportOptions transport;
  std::optional<unsigned> seconds;
  std::vector<std::string> headers;
  std::function<Exit()> command;

  Output output() const {
    if (json && quiet) throw WrongUsage("give either --json or --quiet");
    if (receipts && quiet) throw WrongUsage("give either --receipts or --quiet");
    if (receipts) return Output::Receipts;
    if (json) return Output::Json;
    return quiet ? Output::Quiet : Output::Words;
  }
};

/// The configuration URL of the commands that take a customer or a URL.
std::string serverUrl(const Arguments& arguments) {
  if (arguments.customer.has_value() == arguments.configurationUrl.has_value()) {
    throw WrongUsage("give either --customer or --config-url");
  }
  if (arguments.configurationUrl) return *arguments.configurationUrl;
  return std::string(configurationUrlOf(*arguments.customer).view());
}

CLI::App* addCommand(CLI::App& app, Arguments& arguments, const char* name, const char* help,
                     const std::string& examples, std::function<Exit()> action) {
  CLI::App* command = app.add_subcommand(name, help)->group("Commands");
  command->footer("Examples:\n" + examples);
  command->callback([&arguments, action = std::move(action)] { arguments.command = action; });
  return command;
}

/// A switch. (By default "--json=3" would be a valid one.)
void addFlag(CLI::App& command, const char* name, bool& value, const char* help) {
  command.add_flag(name, value, help)->disable_flag_override();
}

/// An option whose value --help names `type`.
template <class Value>
CLI::Option* addValue(CLI::App& command, const char* name, const char* type, Value& value,
                      const std::string& help) {
  return command.add_option(name, value, help)->type_name(type);
}

/// An option that can be repeated.
void addList(CLI::App& command, const char* name, std::vector<std::string>& values,
             const char* help) {
  command.add_option(name, values, help)
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addOutput(CLI::App& command, Arguments& arguments,
               const char* quietHelp = "Print nothing but errors") {
  addFlag(command, "--json", arguments.json, "Print one JSON object instead");
  addFlag(command, "--quiet", arguments.quiet, quietHelp);
}

void addReceipts(CLI::App& command, Arguments& arguments) {
  addFlag(command, "--receipts", arguments.receipts,
          "Print one JSON object with the receipt of each delivery instead");
}

void addDescription(CLI::App& command, Arguments& arguments) {
  addValue(command, "FILE", "", arguments.file,
           "Report description (JSON), or - for standard input")
      ->required();
}

void addEscape(CLI::App& command, Arguments& arguments) {
  addFlag(command, "--escape", arguments.escape,
          "Escape <, > and & in names and values, so that the report is well-formed XML");
}

void addServer(CLI::App& command, Arguments& arguments) {
  addValue(command, "--customer", "CUSTOMER", arguments.customer,
           "Customer whose server is used: " + customerNames());
  addValue(command, "--config-url", "URL", arguments.configurationUrl,
           "URL of the configuration document, instead of --customer");
}

/// Adds the last options of a command.
void addTransport(CLI::App& command, Arguments& arguments) {
  command.option_defaults()->group("Transport");
  addValue(command, "--ca", "FILE", arguments.transport.authorityFile,
           "Certificate authorities to trust, in place of the system's (PEM)");
  addValue(command, "--proxy", "URL", arguments.transport.proxy,
           "Proxy to use, in place of that of the environment; empty for none");
  addValue(command, "--timeout", "SECONDS", arguments.seconds,
           "Seconds for each request (default: 2)");
  addList(command, "--header", arguments.headers,
          "A header for each request, \"NAME: VALUE\"; can be repeated");
  addFlag(command, "--gzip", arguments.transport.compressRequests,
          "Compress the requests; the server must support it");
}

void addReportCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* render = addCommand(
      app, arguments, "render", "Print the text of a report",
      "  $ ztreport render report.json\n"
      "  $ ztreport render --plain - < report.json",
      [&] { return tools::render(arguments.file, arguments.plain, arguments.output()); });
  addDescription(*render, arguments);
  addFlag(*render, "--plain", arguments.plain, "Print plain XML instead of the SOAP request");
  addEscape(*render, arguments);
  addOutput(*render, arguments);

  CLI::App* send = addCommand(
      app, arguments, "send", "Send a report, and save it if it is not accepted",
      "  $ ztreport send report.json\n"
      "  $ ztreport send report.json --config-url http://127.0.0.1:8025/reporting/kelvane.xml",
      [&] { return tools::send(arguments.file, arguments.configurationUrl, arguments.output()); });
  addDescription(*send, arguments);
  addValue(*send, "--config-url", "URL", arguments.configurationUrl,
           "URL of the configuration document, instead of the one in FILE");
  addEscape(*send, arguments);
  addOutput(*send, arguments);
  addReceipts(*send, arguments);
  addTransport(*send, arguments);

  CLI::App* save =
      addCommand(app, arguments, "save", "Save a report without sending it, and print its path",
                 "  $ ztreport save report.json\n"
                 "  $ ztreport save report.json --app-name Setup",
                 [&] { return tools::save(arguments.file, arguments.output()); });
  addDescription(*save, arguments);
  addEscape(*save, arguments);
  addOutput(*save, arguments);
}

void addRunCommand(CLI::App& app, Arguments& arguments) {
  RunOptions& options = arguments.run;
  CLI::App* run = addCommand(
      app, arguments, "run", "Report one run of a program: the computer, the steps and the facts",
      "  $ ztreport run --customer Kelvane --start setup --step ENTER:Copy --end finish\n"
      "  $ ztreport run --customer Kelvane --fact EDITION=Home --flag DESKTOP_ICON=yes --save",
      [&] { return tools::run(options, arguments.output()); });
  addValue(*run, "--customer", "CUSTOMER", options.customer,
           "Customer whose server is used: " + customerNames())
      ->required();
  run->add_option("--app-id", options.applicationId,
                  "ID of the program, a GUID in braces (default: the customer's ID)");
  run->add_option("--start", options.startPoint, "Name of the point where the run began");
  run->add_option("--end", options.endPoint, "Name of the point where it ended");
  addList(*run, "--fact", options.facts, "A fact, NAME=VALUE; can be repeated");
  addList(*run, "--flag", options.flags, "A yes-or-no fact, NAME=yes or NAME=no; can be repeated");
  addList(*run, "--step", options.steps,
          "A step, TYPE:NAME with TYPE ENTER, LEAVE, EXIT, INFO or ERROR; can be repeated");
  addFlag(*run, "--save", options.save, "Save the report without sending it");
  addEscape(*run, arguments);
  addOutput(*run, arguments);
  addReceipts(*run, arguments);
  addTransport(*run, arguments);
}

void addStoreCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* resend = addCommand(
      app, arguments, "resend", "Send the saved reports",
      "  $ ztreport resend --customer Kelvane\n"
      "  $ ztreport resend --config-url http://127.0.0.1:8025/reporting/kelvane.xml\n"
      "  $ ztreport resend --customer Kelvane --skip-unsendable --retry",
      [&] { return tools::resend(serverUrl(arguments), arguments.resend, arguments.output()); });
  addServer(*resend, arguments);
  addFlag(*resend, "--skip-unsendable", arguments.resend.skipUnsendable,
          "Skip reports that are not accepted, and set them aside after five tries");
  addFlag(*resend, "--retry", arguments.resend.retry,
          "Also wait and try again until nothing is left that can be sent");
  addValue(*resend, "--limit", "N", arguments.resend.limit,
           "Number of reports to try at most; 0 for all");
  addOutput(*resend, arguments);
  addReceipts(*resend, arguments);
  addTransport(*resend, arguments);

  CLI::App* store = addCommand(
      app, arguments, "store", "List the saved reports, and why any of them cannot be sent",
      "  $ ztreport store --app-name Setup\n"
      "  $ ztreport store --set-aside '{0E4D0F7C-9A7B-4B21-A4B2-7F3F7D1E7A55}.ztr'",
      [&] {
        if (arguments.purge && arguments.setAside) {
          throw WrongUsage("give either --purge or --set-aside");
        }
        if (arguments.purge) return purge(arguments.output());
        return arguments.setAside ? setAside(*arguments.setAside, arguments.output())
                                  : listStore(arguments.output());
      });
  addValue(*store, "--set-aside", "FILE", arguments.setAside,
           "Move this saved report, which may block all others, to the folder set-aside");
  addFlag(*store, "--purge", arguments.purge,
          "Remove the saved reports, also those that resend has given up");
  addOutput(*store, arguments, "Print only the reports that cannot be sent");

  CLI::App* show = addCommand(app, arguments, "show", "Print the content of a report's text",
                              "  $ ztreport render report.json | ztreport show -\n"
                              "  $ ztreport show --json 0E4D0F7C-9A7B-4B21-A4B2-7F3F7D1E7A55",
                              [&] { return tools::show(arguments.file, arguments.json); });
  addValue(*show, "FILE", "", arguments.file,
           "File, name or ID of a saved report, or - for standard input")
      ->required();
  addFlag(*show, "--json", arguments.json, "Print a report description (JSON) instead of a tree");
}

void addMachineCommands(CLI::App& app, Arguments& arguments) {
  CLI::App* consent = addCommand(
      app, arguments, "consent", "Print or change what the user has said about reports",
      "  $ ztreport consent --app-name Setup\n"
      "  $ ztreport consent revoked --delete-stored --app-name Setup",
      [&] {
        return tools::consent(arguments.consent, arguments.deleteStored, arguments.output());
      });
  addValue(*consent, "CONSENT", "", arguments.consent,
           "given, revoked (nothing is examined, sent, saved or broadcast) or unset");
  addFlag(*consent, "--delete-stored", arguments.deleteStored, "Delete all saved reports as well");
  addOutput(*consent, arguments);

  CLI::App* probe =
      addCommand(app, arguments, "probe", "Print what the inventory finds on this computer",
                 "  $ ztreport probe\n"
                 "  $ ztreport probe --json",
                 [&] { return tools::probe(arguments.json); });
  addFlag(*probe, "--json", arguments.json, "Print a pool of a report description (JSON)");
  addCommand(app, arguments, "listen",
             "Print the broadcasts of reports as they arrive, one JSON object per line",
             "  $ ztreport listen\n"
             "  $ ztreport listen >> broadcasts.jsonl",
             [] { return tools::listen(); });

  CLI::App* doctor = addCommand(
      app, arguments, "doctor", "Check everything that a report needs, and say how to fix problems",
      "  $ ztreport doctor --customer Kelvane\n"
      "  $ ztreport doctor --config-url http://127.0.0.1:8025/reporting/kelvane.xml --json",
      [&] { return tools::doctor(serverUrl(arguments), arguments.appName, arguments.output()); });
  addServer(*doctor, arguments);
  addOutput(*doctor, arguments, "Print only the checks that failed");
  addTransport(*doctor, arguments);
}

void addAll(CLI::App& app, Arguments& arguments) {
  constexpr std::size_t kHelpColumn = 34;
  app.get_formatter()->column_width(kHelpColumn);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.get_formatter()->label("Positionals", "Arguments");
  app.set_version_flag("--version", std::string("ztreport " ZTPORTAL_VERSION),
                       "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.require_subcommand(1);
  app.fallthrough();
  addFlag(app, "-v", arguments.logs, "Print the library's log on standard error");
  app.add_option("--app-name", arguments.appName, "Name of the program that reports")
      ->capture_default_str();
  app.add_option("--app-version", arguments.appVersion, "Version of the program that reports")
      ->capture_default_str();
  app.footer(
      "Examples:\n"
      "  $ ztreport run --customer Kelvane --start setup --step ENTER:Copy --end finish\n"
      "  $ ztreport send report.json --config-url http://127.0.0.1:8025/reporting/kelvane.xml\n"
      "  $ ztreport doctor --customer Kelvane\n\n"
      "ztreport COMMAND --help describes a command.");
  addReportCommands(app, arguments);
  addRunCommand(app, arguments);
  addStoreCommands(app, arguments);
  addMachineCommands(app, arguments);
}

/// Names the host after the options. The name becomes a folder of the store.
void setHost(const std::string& name, const std::string& version) {
  if (name.empty() || !isFileName(name)) {
    throw WrongUsage("--app-name: \"" + name + "\" is not a folder name");
  }
  ZtHost::setBundleInfo({{"CFBundleName", name},
                         {"CFBundleShortVersionString", version},
                         {"CFBundleVersion", version}});
}

void setTransport(const Arguments& arguments) {
  ZtTransportOptions options = arguments.transport;
  if (arguments.seconds) options.timeout = std::chrono::seconds(*arguments.seconds);
  for (const std::string& header : arguments.headers) {
    const std::size_t colon = header.find(':');
    if (colon == std::string::npos) throw WrongUsage("--header: expected NAME: VALUE");
    const std::string_view value = std::string_view(header).substr(colon + 1);
    options.headers.emplace_back(header.substr(0, colon), trimmed(value));
  }
  const std::string problem = ZtHost::setTransportOptions(std::move(options));
  if (problem.empty()) return;
  // The library names the member.
  constexpr std::array<std::pair<std::string_view, const char*>, 4> kNames{
      {{"authorityFile", "--ca"},
       {"proxy", "--proxy"},
       {"timeout", "--timeout"},
       {"headers", "--header"}}};
  for (const auto& [member, option] : kNames) {
    if (problem.starts_with(member)) throw WrongUsage(option + problem.substr(member.size()));
  }
  throw WrongUsage(problem);
}

Exit runCommandLine(int argc, const char* const* argv) {
  CLI::App app("Reports the run of a program from the command line.", "ztreport");
  Arguments arguments;
  addAll(app, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success, std::cout);
    if (std::cout.flush()) return Exit::Done;
    throw Failure(Exit::MachineFailed, "standard output cannot be written");
  } catch (const CLI::ParseError& error) {
    throw Failure(Exit::WrongInput, usageMessage(app, error));
  }
  try {
    if (arguments.logs) ZtHost::setLogHandler(ZtLogToStderr);
    setHost(arguments.appName, arguments.appVersion);
    setTransport(arguments);
    ZtHost::setValueEscaping(arguments.escape);
    return arguments.command();
  } catch (const WrongUsage& usage) {
    throw Failure(Exit::WrongInput, usage.what() + seeHelp(app));
  }
}

int fail(const std::string& message, Exit exit) {
  complain(message);
  return static_cast<int>(exit);
}

}  // namespace

}  // namespace zt::tools

int main(int argc, char** argv) try {
  return static_cast<int>(zt::tools::runCommandLine(argc, argv));
} catch (const zt::tools::Failure& failure) {
  return zt::tools::fail(failure.what(), failure.exit());
} catch (const std::exception& error) {
  return zt::tools::fail(error.what(), zt::tools::Exit::MachineFailed);
}
