#pragma once

#include <optional>
#include <string_view>

#include "ztportal/base/ZtString.h"

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

/// The installed application of a bundle identifier, which calls itself by what `identifier` of the
/// result says; nothing when there is none.
std::optional<ProbedApplication> installedApplication(std::string_view bundleIdentifier);

/// Path of the application that opens `url` ("http:", "mailto:") for the user; missing when none.
ZtString defaultApplicationPath(std::string_view url);

/// The bundle identifier of the application at `path`; empty without a path or an application
/// there, missing when the application has no identifier.
ZtString applicationIdentifier(const ZtString& path);

}  // namespace zt
