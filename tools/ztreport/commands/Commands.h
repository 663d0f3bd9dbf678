// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/ztreport/commands/InputOutput.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

/// The commands. Each prints its result on standard output and returns the exit status, or throws
/// `Failure`. `file` is a path, or "-" for standard input.

/// Prints the text of a described report.
Exit render(const std::string& file, bool plain, Output output);
/// Posts a described report; saves it when it is not accepted. Without a `configurationUrl`, the
/// one in the description is used.
Exit send(const std::string& file, const std::optional<std::string>& configurationUrl,
          Output output);
/// Saves a described report without sending it, and prints the path of its file.
Exit save(const std::string& file, Output output);

/// The options of `run` as they were typed.
struct RunOptions {
  std::string customer;
  std::string applicationId;
  std::string startPoint;
  std::string endPoint;
  std::vector<std::string> facts;  // "NAME=VALUE"
  std::vector<std::string> flags;  // "NAME=yes" or "NAME=no"
  std::vector<std::string> steps;  // "TYPE:NAME"
  bool save = false;
};

/// Reports one whole run through `ZtReport`; with `save`, saves it without sending. All options are
/// checked first.
Exit run(const RunOptions& options, Output output);

/// URL of the configuration document of a customer. Throws a `Failure` that lists the customers
/// when the library does not know this one.
ZtString configurationUrlOf(const std::string& customer);
/// The customers that the library knows: "Kelvane, Norvantel, …".
std::string customerNames();

struct ResendOptions {
  bool skipUnsendable = false;
  bool retry = false;
  std::size_t limit = 0;  // how many reports are tried; 0: all
};

/// Sends the saved reports, and prints how many were sent and how many are left, and on standard
/// error which one was not accepted and why. A terminal at standard error shows the progress.
/// Ends with the first report that is not accepted, unless it may skip such reports or try again.
Exit resend(const std::string& configurationUrl, const ResendOptions& options, Output output);

/// Prints one line for each saved report, in the order of sending: name, size, age, and whether it
/// can be sent or why not. `Quiet`: only those that cannot be sent.
Exit listStore(Output output);
/// Moves a saved report, named by its path or its name in the store, to the folder "set-aside"
/// beside the store's folder, and prints its new path. Nothing there is replaced: a number is added
/// to a name that is taken.
Exit setAside(const std::string& file, Output output);
/// Removes the saved reports, also those that `resend` has given up, and prints their number.
/// Throws a `Failure` when some cannot be removed.
Exit purge(Output output);

/// Prints a report's text as a tree, or as a report description that renders as the same text
/// again. `file` can also be the name or ID of a saved report.
Exit show(const std::string& file, bool json);

/// Changes what the user has said about reports to `wanted` ("given", "revoked", "unset"), unless
/// that is empty, and prints what it is then. With `deleteStored` also deletes all saved reports.
Exit consent(const std::string& wanted, bool deleteStored, Output output);
/// Throws a `Failure` if the user has revoked the consent.
void requireConsent();

/// Prints what the inventory finds on this computer: aligned lines, or one JSON object that is a
/// pool of a report description.
Exit probe(bool json);

/// Prints each broadcast of a report as one line of JSON as soon as it arrives:
///
///     {"object":"Setup","userInfo":{"date":"…","request":"…","version":"2.1"}}
///
/// Writes a line on standard error once it listens. Ends with SIGINT or SIGTERM; throws a `Failure`
/// when there is no session bus, or when the connection to it is lost.
Exit listen();

/// Checks everything that a report of the program `appName` needs, in order, and prints a line for
/// each check when it is done. `Json`: prints one object at the end. `Quiet`: only the checks that
/// failed. Returns `NotAccepted` when a check failed. Sends only the requests for the configuration
/// and for the server's version.
Exit doctor(const std::string& configurationUrl, const std::string& appName, Output output);

}  // namespace zt::tools
