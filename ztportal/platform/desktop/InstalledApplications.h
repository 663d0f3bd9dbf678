#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The applications that the user can start, as the desktop knows them. A path is that of a
/// bundle's folder, or of whatever else describes an application on the system.
///
///     auto path = applications.withIdentifier("org.mozilla.firefox");
///     if (path) applications.info(*path)->at("CFBundleName");     // "Firefox ESR"
class InstalledApplications {
 public:
  using Info = std::map<std::string, ZtString>;

  virtual ~InstalledApplications() = default;

  /// Path of the installed application with a bundle identifier; nothing when there is none. May
  /// raise a ZtException.
  virtual std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) = 0;

  /// Path of the user's default application for a URL ("http:", "mailto:"); nothing when the user
  /// has none. May raise a ZtException.
  virtual std::optional<std::string> defaultFor(std::string_view url) = 0;

  /// What the application at `path` says of itself, under the keys of a bundle's information
  /// dictionary: "CFBundleIdentifier", "CFBundleName", "CFBundleShortVersionString", each of which
  /// may be absent. Nothing when no application is there. May raise a ZtException.
  virtual std::optional<Info> info(const std::string& path) = 0;

  /// For a caller that will ask a lot: an object that gives the same answers, and begins at once,
  /// beside the caller, to find out about these identifiers and URLs. What it knows of them is as
  /// old as itself; anything else is asked afresh. Used by one thread. Null where nothing is gained
  /// by it: then this object is to be asked. Raises nothing; what cannot be begun raises when it is
  /// asked for.
  virtual std::unique_ptr<InstalledApplications> prepared(
      std::span<const std::string_view> /*bundleIdentifiers*/,
      std::span<const std::string_view> /*urls*/) {
    return nullptr;
  }
};

}  // namespace zt
