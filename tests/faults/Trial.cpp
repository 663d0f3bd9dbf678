#include "tests/faults/Trial.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zt::torture {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kThrewStatus = 1;
/// For what a killed process left in its pipe; programs that it started may hold that open.
constexpr std::chrono::seconds kGrace{1};

int statusOf(const Trial::Body& body, const Teller& teller) {
  try {
    body(teller);
    return 0;
  } catch (const std::exception& error) {
    teller.tell(error.what());
    return kThrewStatus;
  }
}

/// Reads until the other end closes the pipe; false when the time is over before.
bool readToEnd(int pipe, std::string& text, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd entry{pipe, POLLIN, 0};
    if (left <= 0) return false;
    if (::poll(&entry, 1, static_cast<int>(left)) <= 0) continue;
    std::array<char, 65536> part;
    const ssize_t count = ::read(pipe, part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    text.append(part.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

void Teller::tell(const std::string& text) const {
  std::string_view rest = text;
  while (!rest.empty()) {
    const ssize_t count = ::write(_pipe, rest.data(), rest.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return;  // nobody listens any more
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

Trial::Trial(const Body& body) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe for a trial");
  _process = ::fork();
  if (_process < 0) throw std::runtime_error("no process for a trial");
  if (_process == 0) {
    ::close(ends[0]);
    ::_exit(statusOf(body, Teller(ends[1])));
  }
  ::close(ends[1]);
  _pipe = ends[0];
}

Trial::~Trial() {
  kill();
  if (_process > 0) ::waitpid(_process, nullptr, 0);
  ::close(_pipe);
}

void Trial::kill() const {
  if (_process > 0) ::kill(_process, SIGKILL);
}

TrialEnd Trial::wait(std::chrono::milliseconds patience) {
  TrialEnd end;
  const bool inTime = readToEnd(_pipe, end.told, Clock::now() + patience);
  if (!inTime) {
    kill();
    readToEnd(_pipe, end.told, Clock::now() + kGrace);  // what it told just before
  }
  int status = 0;
  while (::waitpid(_process, &status, 0) < 0 && errno == EINTR) {
  }
  _process = -1;
  if (!inTime) {
    end.how = TrialEnd::How::kHung;
  } else if (WIFSIGNALED(status)) {
    end.how = TrialEnd::How::kKilled;
    end.signal = WTERMSIG(status);
  } else if (WEXITSTATUS(status) != 0) {
    end.how = TrialEnd::How::kThrew;
  }
  return end;
}

}  // namespace zt::torture
