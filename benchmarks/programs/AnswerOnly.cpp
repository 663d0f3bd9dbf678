#include "tools/ztinbox/soap/Intake.h"

// An inbox that answers and keeps nothing, as the peer of the one that keeps: linked with this
// before the inbox's own intake.

namespace zt::inbox {

Reaction Intake::receive(const ReportRequest& /*request*/) {
  static_cast<void>(_store);  // unused here
  const std::lock_guard lock(_order);
  return _behaviour.next();
}

}  // namespace zt::inbox
