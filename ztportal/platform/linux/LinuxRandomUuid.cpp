#include <systemd/sd-id128.h>

#include "ztportal/platform/RandomUuid.h"
#include "ztportal/platform/linux/UuidText.h"

namespace zt {

ZtString randomUuid() {
  sd_id128_t id{};
  if (sd_id128_randomize(&id) < 0) return nullptr;
  return uuidText(id.bytes);
}

}  // namespace zt
