#pragma once

#include <map>
#include <string>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"

/// The identity of the host application. Its name determines the folder of its saved reports; every
/// broadcast carries its name and version.
///
/// An application inside a bundle (a folder with `Contents/Info.plist` above the executable) is
/// identified by the bundle. Any other names itself, once, before it makes its first report:
///
///     ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
///                            {"CFBundleShortVersionString", "2.1"},
///                            {"CFBundleVersion", "77"}});
///
/// Any thread may call any operation.
class ZT_EXPORT ZtHost {
 public:
  ZtHost() = delete;

  /// Replaces everything known about the host, its bundle's information included.
  static void setBundleInfo(std::map<std::string, ZtString> info);

  /// The value of a key from `setBundleInfo`, or if that was never called from the main bundle.
  /// Missing for an unknown key, except "CFBundleName": that is then the executable's file name.
  static ZtString bundleInfo(const std::string& key);

  /// Closes the connections that the library keeps for the next report of the calling thread: to
  /// the reporting server and to the session bus. The next report opens new ones. For hosts that
  /// want no open connection between two reports; those of a thread are also closed when it ends.
  static void closeConnections();
};
