// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/Platform.h"

#include <atomic>

namespace zt {

namespace {
constinit std::atomic<Platform*> substitute{nullptr};
}  // namespace

Platform& Platform::current() {
  Platform* platform = substitute.load(std::memory_order_acquire);
  return platform != nullptr ? *platform : systemPlatform();
}

Platform::Substitute::Substitute(Platform& platform) : _before(substitute.exchange(&platform)) {}

Platform::Substitute::~Substitute() { substitute.store(_before); }

}  // namespace zt
