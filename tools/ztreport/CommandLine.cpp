#include "tools/ztreport/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <utility>

#include "tools/ztreport/Commands.h"
#include "tools/ztreport/commands/Customers.h"
#include "tools/ztreport/commands/Listen.h"
#include "tools/ztreport/commands/Probe.h"
#include "tools/ztreport/commands/Resend.h"
#include "tools/ztreport/commands/Show.h"
#include "tools/ztreport/commands/Store.h"
#include "tools/ztreport/doctor/Doctor.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

/// The name becomes a folder of the store, so it must be one plain name.
void setHost(const std::string& name, const std::string& version) {
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
    throw Failure(Exit::WrongInput, "--app-name: \"" + name + "\" cannot name a folder");
  }
  ZtHost::setBundleInfo({{"CFBundleName", name},
                         {"CFBundleShortVersionString", version},
                         {"CFBundleVersion", version}});
}

}  // namespace

CommandLine::CommandLine()
    : _app(std::make_unique<CLI::App>("Reports the run of a program from the command line.",
                                      "ztreport")),
      _appName("ztreport"),
      _appVersion(ZT_VERSION) {
  _app->set_version_flag("--version", std::string("ztreport " ZT_VERSION));
  _app->set_help_flag("--help", "Print this help and exit");
  _app->require_subcommand(1);
  _app->fallthrough();
  _app->add_option("--app-name", _appName, "Name of the program that is reported")
      ->capture_default_str();
  _app->add_option("--app-version", _appVersion, "Version of the program that is reported")
      ->capture_default_str();
  addReports();
  addRun();
  addStore();
  addShow();
  addMachine();
}

CommandLine::~CommandLine() = default;

std::map<std::string, std::vector<std::string>> CommandLine::words() {
  return {{"CUSTOMER", customerIds()}};
}

CLI::App* CommandLine::add(const char* name, const char* help, std::function<Exit()> action) {
  CLI::App* command = _app->add_subcommand(name, help);
  command->callback([this, action = std::move(action)] { _command = action; });
  return command;
}

void CommandLine::takeDescription(CLI::App& command) {
  command.add_option("FILE", _file, "Report description (JSON); - reads standard input")
      ->required();
}

void CommandLine::takeServer(CLI::App& command, const char* whose) {
  CLI::Option_group* server = command.add_option_group("Server", whose);
  server->add_option("--customer", _customer, whose)->type_name("CUSTOMER");
  server->add_option("--config-url", _configurationUrl, "URL of the configuration document")
      ->type_name("URL");
  server->require_option(1);
}

std::string CommandLine::serverUrl() const {
  return _customer ? std::string(configurationUrlOf(*_customer).view()) : _configurationUrl;
}

void CommandLine::addReports() {
  CLI::App* render = add("render", "Print the report's text; nothing is sent",
                         [this] { return zt::tools::render(_file, _plain); });
  takeDescription(*render);
  render->add_flag("--plain", _plain, "Plain XML instead of the SOAP request");

  CLI::App* send = add("send", "Send the report; save it when it is not accepted",
                       [this] { return zt::tools::send(_file, _configurationUrl); });
  takeDescription(*send);
  send->add_option("--config-url", _configurationUrl,
                   "URL of the configuration document, instead of the description's")
      ->type_name("URL");

  takeDescription(*add("save", "Save the report without sending it, and print the path of its file",
                       [this] { return zt::tools::save(_file); }));
}

void CommandLine::addRun() {
  CLI::App* run = add("run", "Report one whole run: the computer, its course and its facts",
                      [this] { return zt::tools::run(_run); });
  run->add_option("--customer", _run.customer, "Customer whose server gets the report")
      ->required()
      ->type_name("CUSTOMER");
  run->add_option("--app-id", _run.applicationId,
                  "ID of the program, a braced GUID (default: the customer's own)");
  run->add_option("--start", _run.startPoint, "Where the run began, in the program's words");
  run->add_option("--end", _run.endPoint, "Where it ended");
  const auto each = [run](const char* name, std::vector<std::string>& values, const char* help) {
    run->add_option(name, values, help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  };
  each("--fact", _run.facts, "NAME=VALUE, a fact as a text; may be given several times");
  each("--flag", _run.flags, "NAME=yes or NAME=no, a fact; may be given several times");
  each("--step", _run.steps,
       "TYPE:NAME, a step (ENTER, LEAVE, EXIT, INFO or ERROR); may be given several times");
  run->add_flag("--save", _run.save, "Save the report without sending it");
}

void CommandLine::addStore() {
  takeServer(
      *add("resend", "Send the saved reports", [this] { return zt::tools::resend(serverUrl()); }),
      "Customer whose server gets them");

  CLI::App* store = add("store", "List the saved reports, and say which cannot be sent and why",
                        [this] { return _setAside ? setAside(*_setAside) : listStore(); });
  store
      ->add_option("--set-aside", _setAside,
                   "Move this saved report, which may stop all others, to the folder set-aside")
      ->type_name("FILE");
}

void CommandLine::addShow() {
  CLI::App* show = add("show", "Print what a report's text says",
                       [this] { return zt::tools::show(_file, _json); });
  show->add_option("FILE", _file, "Report: a file, the name of a saved one; - reads standard input")
      ->required();
  show->add_flag("--json", _json, "A report description (JSON) instead of a tree");
}

void CommandLine::addMachine() {
  add("probe", "Print what the inventory of this computer finds", [this] {
    return probe(_json);
  })->add_flag("--json", _json, "One JSON object, a pool of a report description");
  add("listen", "Print the broadcasts of reports as they come, one JSON object a line",
      [] { return zt::tools::listen(); });

  CLI::App* doctor =
      add("doctor", "Check the whole way of a report, and say what helps where it fails",
          [this] { return zt::tools::doctor(serverUrl(), _appName, _json); });
  takeServer(*doctor, "Customer whose server is asked");
  doctor->add_flag("--json", _json, "One JSON object at the end");
}

Exit CommandLine::run(int argc, const char* const* argv) {
  try {
    _app->parse(argc, argv);
  } catch (const CLI::Success& success) {
    _app->exit(success, std::cout);
    if (std::cout.flush()) return Exit::Done;
    throw Failure(Exit::MachineFailed, "standard output cannot be written");
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = _app->remaining();
    if (_app->get_subcommands().empty() && !unknown.empty()) {
      throw Failure(Exit::WrongInput, "no such command: " + unknown.front());
    }
    throw Failure(Exit::WrongInput, error.what());
  }
  setHost(_appName, _appVersion);
  return _command();
}

}  // namespace zt::tools
