// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <thread>
#include <type_traits>
#include <utility>

/// An atomic property: a reader on one thread sees the whole old or the whole new value of a
/// writer on another, never a mixture. It does not make sequences of reads and writes safe.
///
///     ZtAtomic<ZtString> _startPoint{""};
///     ZtString startPoint() const { return _startPoint.load(); }
///     void setStartPoint(ZtString value) { _startPoint.store(std::move(value)); }
///
/// Small trivial values (`ZtDate`) are single atomic words. Counted references (`ZtString`,
/// `std::shared_ptr`) are guarded by a spin lock while they are copied or swapped; the replaced
/// value is released outside the lock.
template <class T>
class ZtAtomic {
 public:
  ZtAtomic() = default;
  explicit ZtAtomic(T value) : _value(std::move(value)) {}
  ZtAtomic(const ZtAtomic&) = delete;
  ZtAtomic& operator=(const ZtAtomic&) = delete;
  ~ZtAtomic() = default;

  T load() const {
    const Guard guard(_busy);
    return _value;
  }
  void store(T value) {
    const Guard guard(_busy);
    std::swap(_value, value);
  }
  /// The value without a lock, for operations during which no other thread may write it. A guarded
  /// read costs more than writing a short string.
  const T& unguarded() const { return _value; }

 private:
  class Guard {
   public:
    explicit Guard(std::atomic_flag& busy) : _busy(busy) {
      while (_busy.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() { _busy.clear(std::memory_order_release); }

   private:
    std::atomic_flag& _busy;
  };

  T _value{};
  mutable std::atomic_flag _busy;
};

template <class T>
requires std::is_trivially_copyable_v<T>
class ZtAtomic<T> {
 public:
  ZtAtomic() = default;
  explicit ZtAtomic(T value) : _value(value) {}
  T load() const { return _value.load(); }
  void store(T value) { _value.store(value); }

 private:
  std::atomic<T> _value{};
};
