// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The applications that the user can start. A path is that of a bundle's folder, or of another
/// file that describes an application on the system.
///
///     auto path = applications.withIdentifier("org.mozilla.firefox");
///     if (path) applications.info(*path)->at("CFBundleName");     // "Firefox ESR"
class InstalledApplications {
 public:
  using Info = std::map<std::string, ZtString>;

  virtual ~InstalledApplications() = default;

  /// Path of the installed application with a bundle identifier; nullopt if there is none. May
  /// throw a ZtException.
  virtual std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) = 0;

  /// Path of the user's default application for a URL ("http:", "mailto:"); nullopt if there is
  /// none. May throw a ZtException.
  virtual std::optional<std::string> defaultFor(std::string_view url) = 0;

  /// The description of the application at `path` under the keys of a bundle's information
  /// dictionary: "CFBundleIdentifier", "CFBundleName", "CFBundleShortVersionString", each of which
  /// may be absent. Nullopt if there is no application. May throw a ZtException.
  virtual std::optional<Info> info(const std::string& path) = 0;

  /// For a caller with many questions: returns an object that immediately starts to look up these
  /// identifiers and URLs, in parallel with the caller. Its results for them are as of that time;
  /// others are looked up when needed. Used by one thread. Null if there is no advantage; then use
  /// this object. Throws nothing; a failure is reported when its result is needed.
  virtual std::unique_ptr<InstalledApplications> prepared(
      std::span<const std::string_view> /*bundleIdentifiers*/,
      std::span<const std::string_view> /*urls*/) {
    return nullptr;
  }
};

}  // namespace zt
