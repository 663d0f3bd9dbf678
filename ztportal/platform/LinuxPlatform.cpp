// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/Platform.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/http/CurlHttpTransport.h"
#include "ztportal/platform/identity/LinuxGestalt.h"
#include "ztportal/platform/identity/LinuxMachineIdentity.h"
#include "ztportal/platform/locale/IcuUserLocale.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

namespace zt {

namespace {

class LinuxPlatform final : public Platform {
 public:
  HttpTransport& http() override { return _http; }
  Files& files() override { return _files; }
  SupportFolder& supportFolder() override { return _supportFolder; }
  RunningApplications& runningApplications() override { return _runningApplications; }
  Broadcast& broadcast() override { return _broadcast; }
  Gestalt& gestalt() override { return _gestalt; }
  MachineIdentity& machineIdentity() override { return _machineIdentity; }
  Localizations& localizations() override { return _localizations; }
  UserLocale& userLocale() override { return _userLocale; }
  InstalledApplications& installedApplications() override { return _installedApplications; }
  Subprocesses& subprocesses() override { return _subprocesses; }

 private:
  CurlHttpTransport _http;
  LinuxFiles _files;
  LinuxSupportFolder _supportFolder;
  LinuxRunningApplications _runningApplications;
  LinuxBroadcast _broadcast;
  LinuxGestalt _gestalt;
  LinuxMachineIdentity _machineIdentity;
  BundleLocalizations _localizations;
  IcuUserLocale _userLocale;
  LinuxInstalledApplications _installedApplications;
  LinuxSubprocesses _subprocesses;
};

}  // namespace

Platform& systemPlatform() {
  // Never destroyed, so that a host can still report from its static destructors.
  static Platform& platform = *new LinuxPlatform;
  return platform;
}

}  // namespace zt
