// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstddef>

namespace zt::inbox {

/// Limits the memory that all connections use together. Thread-safe.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::size_t most) : _most(most) {}

  /// What one connection uses; it ends with its scope.
  class Share {
   public:
    explicit Share(MemoryBudget& budget) : _budget(budget) {}
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;
    ~Share() { clear(); }

    /// Returns false, and changes nothing, if that would be too much.
    bool grow(std::size_t size) {
      if (_budget._used.fetch_add(size) + size > _budget._most) {
        _budget._used -= size;
        return false;
      }
      _size += size;
      return true;
    }
    void clear() {
      _budget._used -= _size;
      _size = 0;
    }

   private:
    MemoryBudget& _budget;
    std::size_t _size = 0;
  };

 private:
  const std::size_t _most;
  std::atomic<std::size_t> _used{0};
};

}  // namespace zt::inbox
