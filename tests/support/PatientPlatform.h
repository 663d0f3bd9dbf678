// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>

#include "ztportal/platform/Platform.h"
#include "ztportal/platform/broadcast/LinuxBroadcast.h"

namespace zt::test {

/// The real platform during its lifetime, except that the session bus has a minute to answer: on a
/// busy machine the usual time is sometimes too short.
class PatientPlatform final : public Platform {
 public:
  HttpTransport& http() override { return _real.http(); }
  Files& files() override { return _real.files(); }
  SupportFolder& supportFolder() override { return _real.supportFolder(); }
  RunningApplications& runningApplications() override { return _real.runningApplications(); }
  Broadcast& broadcast() override { return _broadcast; }
  Gestalt& gestalt() override { return _real.gestalt(); }
  MachineIdentity& machineIdentity() override { return _real.machineIdentity(); }
  Localizations& localizations() override { return _real.localizations(); }
  UserLocale& userLocale() override { return _real.userLocale(); }
  InstalledApplications& installedApplications() override { return _real.installedApplications(); }
  Subprocesses& subprocesses() override { return _real.subprocesses(); }

 private:
  Platform& _real = systemPlatform();
  LinuxBroadcast _broadcast{std::chrono::minutes(1)};
  Substitute _inForce{*this};
};

}  // namespace zt::test
