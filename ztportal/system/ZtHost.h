#pragma once

#include <map>
#include <string>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// Who the host application is. Its name decides the folder of its saved reports, name and version
/// go into every notification and report.
///
/// An application inside a bundle (a folder with `Contents/Info.plist` above the executable) is
/// known by it. One outside any bundle names itself, once, before it makes its first report:
///
///     ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
///                            {"CFBundleShortVersionString", "2.1"},
///                            {"CFBundleVersion", "77"}});
///
/// Any thread may call any operation.
class ZT_EXPORT ZtHost {
 public:
  ZtHost() = delete;

  /// Replaces all that is known of the host, also what its bundle says.
  static void setBundleInfo(std::map<std::string, ZtString> info);

  /// The value of a key, from `setBundleInfo` or else from the main bundle; missing for a key that
  /// is not there. "CFBundleName" is never missing for that: it is then the executable's file name.
  static ZtString bundleInfo(const std::string& key);
};
