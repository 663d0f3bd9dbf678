#include "ztportal/platform/identity/LinuxMachineIdentity.h"

#include <systemd/sd-id128.h>

#include "ztportal/platform/identity/UuidText.h"

namespace zt {

ZtString LinuxMachineIdentity::platformUUID() {
  sd_id128_t application{};
  if (sd_id128_from_string(kApplicationId, &application) < 0) return nullptr;
  sd_id128_t derived{};
  if (sd_id128_get_machine_app_specific(application, &derived) < 0) return nullptr;
  return uuidText(derived.bytes);
}

}  // namespace zt
