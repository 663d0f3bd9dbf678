#include <CLI/CLI.hpp>
#include <exception>
#include <functional>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "tools/ztreport/Commands.h"
#include "tools/ztreport/Customers.h"
#include "tools/ztreport/Probe.h"
#include "tools/ztreport/Run.h"
#include "tools/ztreport/Show.h"
#include "ztportal/ztportal.h"

namespace {

using zt::tools::Exit;
using zt::tools::Failure;

int failed(const std::string& message, Exit exit) {
  std::cerr << "ztreport: " << message << '\n';
  return static_cast<int>(exit);
}

/// The name becomes a folder of the store, so it must be one plain name.
void setHost(const std::string& name, const std::string& version) {
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
    throw Failure(Exit::WrongInput, "--app-name: \"" + name + "\" cannot name a folder");
  }
  ZtHost::setBundleInfo({{"CFBundleName", name},
                         {"CFBundleShortVersionString", version},
                         {"CFBundleVersion", version}});
}

int run(int argc, char** argv) {
  CLI::App app("Reports the run of a program from the command line.", "ztreport");
  app.set_version_flag("--version", std::string("ztreport " ZT_VERSION));
  app.set_help_flag("--help", "Print this help and exit");
  app.require_subcommand(1);
  app.fallthrough();

  std::string appName = "ztreport";
  std::string appVersion = ZT_VERSION;
  app.add_option("--app-name", appName, "Name of the program that is reported")
      ->capture_default_str();
  app.add_option("--app-version", appVersion, "Version of the program that is reported")
      ->capture_default_str();

  std::string file;
  std::string configurationUrl;
  bool plain = false;
  std::function<Exit()> command;
  const auto add = [&](const char* name, const char* help, std::function<Exit()> action) {
    CLI::App* subcommand = app.add_subcommand(name, help);
    subcommand->callback([&command, action = std::move(action)] { command = action; });
    return subcommand;
  };
  const auto takeFile = [&](CLI::App* subcommand) {
    subcommand->add_option("FILE", file, "Report description (JSON); - reads standard input")
        ->required();
  };

  CLI::App* render = add("render", "Print the report's text; nothing is sent",
                         [&] { return zt::tools::render(file, plain); });
  takeFile(render);
  render->add_flag("--plain", plain, "Plain XML instead of the SOAP request");

  CLI::App* send = add("send", "Send the report; save it when it is not accepted",
                       [&] { return zt::tools::send(file, configurationUrl); });
  takeFile(send);
  send->add_option("--config-url", configurationUrl,
                   "URL of the configuration document, instead of the description's");

  takeFile(add("save", "Save the report without sending it, and print the path of its file",
               [&] { return zt::tools::save(file); }));

  zt::tools::RunOptions options;
  CLI::App* whole = add("run", "Report one whole run: the computer, its course and its facts",
                        [&] { return zt::tools::run(options); });
  whole->add_option("--customer", options.customer, "Customer whose server gets the report")
      ->required();
  whole->add_option("--app-id", options.applicationId,
                    "ID of the program, a braced GUID (default: the customer's own)");
  whole->add_option("--start", options.startPoint, "Where the run began, in the program's words");
  whole->add_option("--end", options.endPoint, "Where it ended");
  const auto each = [&](const char* name, std::vector<std::string>& values, const char* help) {
    whole->add_option(name, values, help)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  };
  each("--fact", options.facts, "NAME=VALUE, a fact as a text; may be given several times");
  each("--flag", options.flags, "NAME=yes or NAME=no, a fact; may be given several times");
  each("--step", options.steps,
       "TYPE:NAME, a step (ENTER, LEAVE, EXIT, INFO or ERROR); may be given several times");
  whole->add_flag("--save", options.save, "Save the report without sending it");

  std::optional<std::string> customer;
  CLI::App* resend = add("resend", "Send the saved reports", [&] {
    return zt::tools::resend(customer ? std::string(zt::tools::configurationUrlOf(*customer).view())
                                      : configurationUrl);
  });
  CLI::Option_group* server = resend->add_option_group("Server", "Whose server gets them");
  server->add_option("--customer", customer, "Customer whose server gets them");
  server->add_option("--config-url", configurationUrl, "URL of the configuration document");
  server->require_option(1);

  bool json = false;
  add("probe", "Print what the inventory of this computer finds", [&] {
    return zt::tools::probe(json);
  })->add_flag("--json", json, "One JSON object, a pool of a report description");

  CLI::App* show =
      add("show", "Print what a report's text says", [&] { return zt::tools::show(file, json); });
  show->add_option("FILE", file, "Report: a file, the name of a saved one; - reads standard input")
      ->required();
  show->add_flag("--json", json, "A report description (JSON) instead of a tree");

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    app.exit(success, std::cout);
    if (std::cout.flush()) return static_cast<int>(Exit::Done);
    return failed("standard output cannot be written", Exit::MachineFailed);
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining();
    if (app.get_subcommands().empty() && !unknown.empty()) {
      return failed("no such command: " + unknown.front(), Exit::WrongInput);
    }
    return failed(error.what(), Exit::WrongInput);
  }
  setHost(appName, appVersion);
  return static_cast<int>(command());
}

}  // namespace

int main(int argc, char** argv) try { return run(argc, argv); } catch (const Failure& failure) {
  return failed(failure.what(), failure.exit());
} catch (const std::exception& error) {
  return failed(error.what(), Exit::MachineFailed);
}
