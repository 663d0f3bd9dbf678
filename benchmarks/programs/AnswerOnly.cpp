#include "tools/ztinbox/soap/Intake.h"

// Makes an inbox that responds and keeps nothing, as the peer of the one that keeps: the linker
// takes this definition in place of the inbox's own.

namespace zt::inbox {

Reaction Intake::receive(const Incoming& /*incoming*/) {
  static_cast<void>(_store);  // unused here
  const std::lock_guard lock(_order);
  return _behaviour.next();
}

}  // namespace zt::inbox
