#pragma once

#include <unistd.h>

#include <utility>

namespace zt {

/// A file descriptor, closed with its holder; -1 is none.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : _number(number) {}
  Descriptor(Descriptor&& other) noexcept : _number(std::exchange(other._number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  bool isOpen() const { return _number >= 0; }
  int number() const { return _number; }
  void close() {
    if (isOpen()) ::close(std::exchange(_number, -1));
  }

 private:
  int _number = -1;
};

}  // namespace zt
