// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace zt {

/// Deleter for objects of foreign libraries:
///
///     using Buffer = std::unique_ptr<xmlBuffer, Free<xmlBufferFree>>;
template <auto kFree>
struct Free {
  template <class T>
  void operator()(T* object) const {
    kFree(object);
  }
};

}  // namespace zt
