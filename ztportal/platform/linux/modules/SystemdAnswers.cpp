#include "ztportal/platform/linux/LinuxBroadcast.h"
#include "ztportal/platform/linux/LinuxMachineIdentity.h"
#include "ztportal/platform/linux/modules/Module.h"
#include "ztportal/platform/linux/modules/SystemdModule.h"

namespace zt {

void LinuxBroadcast::post(const ZtString& name, const ZtString& object,
                          const std::map<std::string, ZtString>& userInfo) {
  if (const auto* systemd = module<SystemdModule>()) systemd->post(name, object, userInfo);
}

ZtString LinuxMachineIdentity::platformUUID() {
  const auto* systemd = module<SystemdModule>();
  return systemd == nullptr ? ZtString() : systemd->platformUUID();
}

}  // namespace zt
