#pragma once

#include "ztportal/platform/broadcast/Broadcast.h"
#include "ztportal/platform/desktop/InstalledApplications.h"
#include "ztportal/platform/desktop/RunningApplications.h"
#include "ztportal/platform/files/Files.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/http/HttpTransport.h"
#include "ztportal/platform/identity/Gestalt.h"
#include "ztportal/platform/identity/MachineIdentity.h"
#include "ztportal/platform/locale/Localizations.h"
#include "ztportal/platform/locale/UserLocale.h"
#include "ztportal/platform/process/ChildProcess.h"

namespace zt {

/// All that the library asks of the machine and that a test may want to answer otherwise. What
/// is a function of its arguments and the environment (XML, dates, property lists) is not here.
///
/// The answers have no state that their users could see, so one object serves all threads.
class Platform {
 public:
  virtual ~Platform() = default;

  virtual HttpTransport& http() = 0;
  virtual Files& files() = 0;
  virtual SupportFolder& supportFolder() = 0;
  virtual RunningApplications& runningApplications() = 0;
  virtual Broadcast& broadcast() = 0;
  virtual Gestalt& gestalt() = 0;
  virtual MachineIdentity& machineIdentity() = 0;
  virtual Localizations& localizations() = 0;
  virtual UserLocale& userLocale() = 0;
  virtual InstalledApplications& installedApplications() = 0;
  virtual ChildProcess& childProcess() = 0;

  /// The platform in force: the machine's own, unless a test has put another one in its place.
  static Platform& current();

  /// Puts another platform in the place of the machine's own for a scope.
  class Substitute {
   public:
    explicit Substitute(Platform& platform);
    Substitute(const Substitute&) = delete;
    Substitute& operator=(const Substitute&) = delete;
    ~Substitute();

   private:
    Platform* _before;
  };
};

/// The machine's own answers; each system's folder defines it.
Platform& systemPlatform();

}  // namespace zt
