#pragma once

namespace zt {

/// Deleter that hands an object of a foreign library back to it:
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
