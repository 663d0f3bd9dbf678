#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The applications that the user can start. A path is that of a bundle's folder, or of whatever
/// else describes an application on the system.
///
///     auto path = applications.withIdentifier("org.mozilla.firefox");
///     if (path) applications.info(*path)->at("CFBundleName");     // "Firefox ESR"
class InstalledApplications {
 public:
  using Info = std::map<std::string, ZtString>;

  virtual ~InstalledApplications() = default;

  /// Path of the installed application with a bundle identifier; nothing if there is none. May
  /// throw a ZtException.
  virtual std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) = 0;

  /// Path of the user's default application for a URL ("http:", "mailto:"); nothing if the user
  /// has none. May throw a ZtException.
  virtual std::optional<std::string> defaultFor(std::string_view url) = 0;

  /// The description of the application at `path` under the keys of a bundle's information
  /// dictionary: "CFBundleIdentifier", "CFBundleName", "CFBundleShortVersionString", each of which
  /// may be absent. Nothing if no application is there. May throw a ZtException.
  virtual std::optional<Info> info(const std::string& path) = 0;

  /// For a caller with many questions: an object with the same results that starts at once, in
  /// parallel to the caller, to look up these identifiers and URLs. Its results for them are as old
  /// as itself; others are looked up when needed. Used by one thread. Null if nothing is gained by
  /// it: then use this object. Throws nothing; a failure is reported when its result is needed.
  virtual std::unique_ptr<InstalledApplications> prepared(
      std::span<const std::string_view> /*bundleIdentifiers*/,
      std::span<const std::string_view> /*urls*/) {
    return nullptr;
  }
};

}  // namespace zt
