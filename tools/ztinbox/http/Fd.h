#pragma once

#include <unistd.h>

#include <utility>

namespace zt::inbox {

/// Owns one file descriptor and closes it.
class Fd {
 public:
  Fd() = default;
  explicit Fd(int number) : _number(number) {}
  Fd(Fd&& other) noexcept : _number(std::exchange(other._number, -1)) {}
  Fd& operator=(Fd&& other) noexcept {
    std::swap(_number, other._number);
    return *this;
  }
  ~Fd() {
    if (_number >= 0) ::close(_number);
  }

  int number() const { return _number; }
  bool isOpen() const { return _number >= 0; }

 private:
  int _number = -1;
};

}  // namespace zt::inbox
