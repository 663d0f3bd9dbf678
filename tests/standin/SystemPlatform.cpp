#include <stdexcept>

#include "ztportal/platform/Platform.h"

namespace zt {

Platform& systemPlatform() {
  throw std::logic_error("The stand-ins are no platform: the test has to make one up");
}

}  // namespace zt
