// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace zt::test {

/// A pseudoterminal. A program opens `name()`; the test reads what it wrote.
class Terminal {
 public:
  explicit Terminal(unsigned short columns = 80) {
    if (_reader < 0 || ::grantpt(_reader) != 0 || ::unlockpt(_reader) != 0 ||
        ::ptsname_r(_reader, _name.data(), _name.size()) != 0) {
      throw std::runtime_error("no terminal");
    }
    _program = ::open(_name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const winsize size{24, columns, 0, 0};
    ::ioctl(_program, TIOCSWINSZ, &size);
    termios modes{};
    ::tcgetattr(_program, &modes);
    modes.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    ::tcsetattr(_program, TCSANOW, &modes);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    ::close(_program);
    ::close(_reader);
  }

  std::string name() const { return _name.data(); }

  /// What the program has written; call it after the program has ended. A terminal buffers 4 KiB.
  std::string shown() const {
    std::array<char, 4096> part{};
    ::fcntl(_reader, F_SETFL, O_NONBLOCK);
    std::string text;
    for (;;) {
      const ssize_t count = ::read(_reader, part.data(), part.size());
      if (count <= 0) return text;
      text.append(part.data(), static_cast<std::size_t>(count));
    }
  }

 private:
  std::array<char, 64> _name{};
  int _reader = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  int _program = -1;
};

}  // namespace zt::test
