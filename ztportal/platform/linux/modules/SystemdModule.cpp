#include "ztportal/platform/linux/modules/SystemdModule.h"

#include "ztportal/base/ZtExport.h"
#include "ztportal/platform/linux/LinuxBroadcast.h"
#include "ztportal/platform/linux/LinuxMachineIdentity.h"

namespace {

void post(const ZtString& name, const ZtString& object,
          const std::map<std::string, ZtString>& userInfo) {
  zt::LinuxBroadcast().post(name, object, userInfo);
}

ZtString platformUUID() { return zt::LinuxMachineIdentity().platformUUID(); }

}  // namespace

extern "C" ZT_EXPORT const zt::SystemdModule ztportalModuleTable;
const zt::SystemdModule ztportalModuleTable{post, platformUUID};
