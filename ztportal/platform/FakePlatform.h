// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/platform/Platform.h"
#include "ztportal/platform/broadcast/FakeBroadcast.h"
#include "ztportal/platform/desktop/FakeApplications.h"
#include "ztportal/platform/files/FakeFiles.h"
#include "ztportal/platform/http/FakeHttpTransport.h"
#include "ztportal/platform/identity/FakeIdentity.h"
#include "ztportal/platform/locale/FakeUserLocale.h"
#include "ztportal/platform/process/FakeSubprocesses.h"

namespace zt::test {

/// A platform of fakes, which is the current platform during its lifetime.
///
///     FakePlatform platform;
///     platform.http_.answer = [](const auto&) { return HttpResponse{200, "<versioninfo/>"}; };
class FakePlatform final : public Platform {
 public:
  HttpTransport& http() override { return http_; }
  Files& files() override { return replacedFiles != nullptr ? *replacedFiles : files_; }
  SupportFolder& supportFolder() override { return supportFolder_; }
  RunningApplications& runningApplications() override { return runningApplications_; }
  Broadcast& broadcast() override { return broadcast_; }
  Gestalt& gestalt() override { return gestalt_; }
  MachineIdentity& machineIdentity() override { return machineIdentity_; }
  Localizations& localizations() override { return localizations_; }
  UserLocale& userLocale() override { return userLocale_; }
  InstalledApplications& installedApplications() override { return installedApplications_; }
  Subprocesses& subprocesses() override { return subprocesses_; }

  FakeHttpTransport http_;
  FakeFiles files_;
  Files* replacedFiles = nullptr;  // used instead of files_: failing files, or real ones
  FakeSupportFolder supportFolder_;
  FakeRunningApplications runningApplications_;
  FakeBroadcast broadcast_;
  FakeGestalt gestalt_;
  FakeMachineIdentity machineIdentity_;
  FakeLocalizations localizations_;
  FakeUserLocale userLocale_;
  FakeInstalledApplications installedApplications_;
  FakeSubprocesses subprocesses_;

 private:
  Substitute _inForce{*this};
};

}  // namespace zt::test
