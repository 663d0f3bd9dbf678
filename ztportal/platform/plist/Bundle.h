// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/base/ZtString.h"
#include "ztportal/platform/plist/PropertyList.h"

namespace zt {

/// An application as a folder: `Contents/Info.plist`, `Contents/Resources/`, and the executable
/// anywhere below.
///
///     if (auto bundle = Bundle::above("/opt/Setup.app/Contents/Linux/setup")) {
///       bundle->path();                       // "/opt/Setup.app"
///       bundle->info("CFBundleName");         // "Setup"
///     }
///
/// A folder is a bundle only for those who can rely on it: it, `Contents` and `Info.plist` belong
/// to root or to the user of this process, and nobody else may write them. The group may if it is
/// the private group of their owner.
class Bundle {
 public:
  /// The bundle in the folder `path`; nothing unless its `Info.plist` can be read.
  static std::optional<Bundle> at(const std::string& path);
  /// The nearest bundle above the file `executable`. It may also belong to the owner of that file:
  /// an installer that the user unpacked may be run by root.
  static std::optional<Bundle> above(const std::string& executable);
  /// The path of the nearest bundle above `executable`, without reading its `Info.plist`.
  static std::optional<std::string> pathAbove(const std::string& executable);

  const std::string& path() const { return _path; }
  /// A string of `Info.plist`; missing if it is absent or of another kind.
  ZtString info(const std::string& key) const;
  const PropertyListStrings& info() const { return _info; }

  /// Path of the file `name`.`type` in `Contents/Resources`, if there is one and the rules for
  /// `Info.plist` apply to it.
  std::optional<std::string> resource(std::string_view name, std::string_view type) const;
  /// Names of the folders `*.lproj` in `Contents/Resources`, without the ending, sorted.
  std::vector<std::string> localizations() const;

 private:
  Bundle(std::string path, PropertyListStrings info);
  static std::optional<Bundle> read(const std::string& path);

  std::string _path;
  PropertyListStrings _info;
};

}  // namespace zt
