// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtLog.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/system/ZtPrivacy.h"

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

  /// With `isOn`, every name and value in the text of a report is written so that an XML parser
  /// reads it back: `<`, `>`, `&` and carriage returns are escaped, and what XML 1.0 cannot hold
  /// (control characters, bytes that are not UTF-8) becomes U+FFFD. Off at first: values are
  /// written as they are, and one with a `<` or `&` makes a report that the server may not
  /// understand and that cannot be sent again once it is saved. For all reports of the process; to
  /// be called before the first one is written. Texts that are escaped already would be escaped
  /// twice.
  static void setValueEscaping(bool isOn);

  /// Keeps what the user has said about reports, for all processes of this host and for later ones.
  /// Once revoked, the library examines nothing for reports, contacts no server, and sends, saves
  /// and broadcasts nothing; `ZtDelivery::outcome` is then `NoConsent`. Reports that are already in
  /// the store stay there, until the host removes them with `ZtReportStore::removeAll` or the
  /// consent is given again. Returns false if the consent cannot be kept, such as on a full disk; a
  /// revocation is then valid for this process at least. Call `setBundleInfo` first: the consent is
  /// the file "consent" in the host's folder, `Kelvane/<name of the host>` in the user's
  /// application-support folder.
  static bool setConsent(ZtConsent consent);
  /// What the user has said, read anew. A file that cannot be read or understood is a revocation.
  static ZtConsent consent();

  /// Whether reports are broadcast on the session bus before they are sent; they are at first.
  static void setBroadcastEnabled(bool isEnabled);

  /// Asks `filter` about every value whenever the text of a report is written; a dropped value is
  /// left out together with its name, one of the report itself stays empty. An empty function ends
  /// that. The filter runs on the thread that writes the report, which it must not change. If it
  /// throws, the value is dropped.
  ///
  ///     ZtHost::setValueFilter([](auto, std::string_view name, auto) {
  ///       return name == "MachineID" ? ZtDecision::drop() : ZtDecision::keep();
  ///     });
  static void setValueFilter(ZtValueFilter filter);

  /// Asks `hook` about the text of a report each time before it is broadcast and sent, before it is
  /// saved, and before it is sent from the store. A dropped one is not; `ZtDelivery::outcome` is
  /// then `Dropped`. An empty function ends that. The hook runs on the thread that delivers the
  /// report. If it throws, the report is dropped.
  static void setRequestHook(ZtRequestHook hook);

  /// Passes the library's log to `handler` from now on, for all threads; an empty one turns the log
  /// off, as it is at first. It says what the functions of the library keep silent about: why a
  /// report was not accepted, not saved or not complete.
  static void setLogHandler(ZtLogHandler handler);
};
