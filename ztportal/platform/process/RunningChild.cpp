#include "ztportal/platform/process/RunningChild.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <utility>

namespace zt {

RunningChild::RunningChild(pid_t process, FileDescriptor input, FileDescriptor output)
    : _process(process), _input(std::move(input)), _output(std::move(output)) {}

RunningChild::~RunningChild() {
  _output.close();
  _input.close();
  while (::waitpid(_process, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string RunningChild::readToEnd() const {
  std::string text;
  std::array<char, std::size_t{16} * 1024> block;
  for (;;) {
    const ssize_t count = ::read(_output.number(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace zt
