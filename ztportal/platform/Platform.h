// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/platform/broadcast/Broadcast.h"
#include "ztportal/platform/desktop/InstalledApplications.h"
#include "ztportal/platform/desktop/RunningApplications.h"
#include "ztportal/platform/files/Files.h"
#include "ztportal/platform/files/SupportFolder.h"
#include "ztportal/platform/http/HttpTransport.h"
#include "ztportal/platform/identity/Gestalt.h"
#include "ztportal/platform/identity/MachineIdentity.h"
#include "ztportal/platform/locale/UserLocale.h"
#include "ztportal/platform/process/Subprocesses.h"

namespace zt {

/// The interfaces through which the library uses the operating system. Tests replace them by fakes.
/// Functions that depend only on their arguments and the environment (XML, dates, property lists)
/// are not part of it.
///
/// The objects have no visible state, so all threads can use them.
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
  virtual Subprocesses& subprocesses() = 0;

  /// The operating system's platform, unless a test has replaced it.
  static Platform& current();

  /// Replaces the current platform for a scope.
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

/// Defined once for each operating system.
Platform& systemPlatform();

}  // namespace zt
