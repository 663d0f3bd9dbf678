#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/desktop/InstalledApplications.h"

namespace zt {

/// What the inventory of a computer asks of the machine. Each may raise a ZtException.

/// Whether the user's primary group is 80 or 20, by the directory service's answer for the home
/// folder. 20 counts deliberately: it is the group of every user on some machines, and their
/// reports have always said so.
bool isUserAdmin();

/// The code of the user's most preferred language ("de", "pt-BR"); nothing when the user names
/// none.
std::optional<ZtString> preferredLanguageCode();

/// An application as an inventory lists it. Its name and version are missing when it tells none.
struct ProbedApplication {
  ZtString identifier;
  ZtString name;
  ZtString version;
};

/// The applications of the machine, as an inventory asks for them. Used by one thread, and not
/// longer than the platform in force.
class ProbedApplications {
 public:
  /// Finds out about each when it is asked for.
  ProbedApplications();
  /// Begins at once to find out about these, beside the caller.
  ProbedApplications(std::span<const std::string_view> bundleIdentifiers,
                     std::span<const std::string_view> urls);

  /// The installed application of a bundle identifier, which calls itself by what `identifier` of
  /// the result says; nothing when there is none.
  std::optional<ProbedApplication> installed(std::string_view bundleIdentifier) const;

  /// Path of the application that opens `url` ("http:", "mailto:") for the user; missing when none.
  ZtString defaultPath(std::string_view url) const;

  /// The bundle identifier of the application at `path`; empty without a path or an application
  /// there, missing when the application has no identifier.
  ZtString identifierAt(const ZtString& path) const;

 private:
  std::unique_ptr<InstalledApplications> _prepared;  // null where nothing is gained by it
  InstalledApplications& _applications;
};

}  // namespace zt
