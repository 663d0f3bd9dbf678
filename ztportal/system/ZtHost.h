#pragma once

#include <map>
#include <string>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtLog.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"

/// The identity of the host application. Its name determines the folder of its saved reports; every
/// broadcast contains its name and version.
///
/// An application inside a bundle (a folder with `Contents/Info.plist` above the executable) is
/// identified by the bundle. Any other application names itself once, before its first report:
///
///     ZtHost::setBundleInfo({{"CFBundleName", "Setup"},
///                            {"CFBundleShortVersionString", "2.1"},
///                            {"CFBundleVersion", "77"}});
///
/// Any thread may call any operation.
class ZT_EXPORT ZtHost {
 public:
  ZtHost() = delete;

  /// Replaces all information about the host, including that of its bundle.
  static void setBundleInfo(std::map<std::string, ZtString> info);

  /// The value of a key from `setBundleInfo`, or if that was never called from the main bundle.
  /// Missing for an unknown key, except "CFBundleName": that is then the executable's file name.
  static ZtString bundleInfo(const std::string& key);

  /// How the requests of all documents that are created from now on travel. Returns
  /// `options.problem()`: if that is not empty, the options stay as they were.
  static std::string setTransportOptions(ZtTransportOptions options);
  /// Those of the last successful call; the defaults before that.
  static ZtTransportOptions transportOptions();

  /// Closes the connections that the library keeps for the next report of the calling thread: to
  /// the reporting server and to the session bus. The next report opens new ones. For hosts that
  /// want no open connection between two reports; those of a thread are also closed when it ends.
  static void closeConnections();

  /// The paths of the library's helper programs (`dscl`, `ztportal-applications`) that are not
  /// installed where the library looks for them; empty if all are. Without them an inventory has no
  /// applications and no administrator. A host that is shipped with the library should check this
  /// once, when it is tested.
  static std::vector<std::string> missingPrograms();

  /// Passes the library's log to `handler` from now on, for all threads; an empty one turns the log
  /// off, as it is at first. It says what the functions of the library keep silent about: why a
  /// report was not accepted, not saved or not complete.
  static void setLogHandler(ZtLogHandler handler);
};
