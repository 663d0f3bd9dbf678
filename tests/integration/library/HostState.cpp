#include "tests/integration/library/HostState.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace zt::test {

namespace {

constexpr const char* kDescriptor = "descriptor ";
constexpr const char* kPair = " pair";
/// What the C library adds to every action that is set, also to one that is set back.
constexpr int kRestorer = 0x04000000;

template <class... Values>
std::string joined(const Values&... values) {
  std::ostringstream text;
  ((text << values << ' '), ...);
  return text.str();
}

void addSignals(HostState& state) {
  for (int number = 1; number < NSIG; ++number) {
    struct sigaction action {};
    if (::sigaction(number, nullptr, &action) != 0) continue;
    state["signal " + std::to_string(number)] =
        joined(reinterpret_cast<const void*>(action.sa_handler), action.sa_flags & ~kRestorer);
  }
  sigset_t blocked;
  ::sigprocmask(SIG_BLOCK, nullptr, &blocked);
  std::string mask;
  for (int number = 1; number < NSIG; ++number)
    mask += ::sigismember(&blocked, number) == 1 ? '1' : '0';
  state["signal mask"] = mask;
}

/// The lines of /proc/self/status that say something of this kind.
void addStatus(HostState& state) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    for (const char* name : {"Umask:", "Threads:", "Uid:", "Gid:", "CapEff:", "Seccomp:"}) {
      if (line.starts_with(name)) state[name] = line;
    }
  }
}

std::string descriptorText(int number) {
  char target[512];
  const std::string link = "/proc/self/fd/" + std::to_string(number);
  const ssize_t length = ::readlink(link.c_str(), target, sizeof(target));
  std::string text(target, length < 0 ? 0 : static_cast<std::size_t>(length));
  text += ::fcntl(number, F_GETFD) == FD_CLOEXEC ? " closed in programs" : " inherited";
  sockaddr_storage address{};
  socklen_t size = sizeof(address);
  if (::getsockname(number, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
      address.ss_family != AF_UNIX) {
    text += " network";
  }
  // One of a socketpair(2): a UNIX socket whose peer has no address.
  size = sizeof(address);
  if (::getpeername(number, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
      address.ss_family == AF_UNIX && size == sizeof(sa_family_t)) {
    text += kPair;
  }
  const int flags = ::fcntl(number, F_GETFL);
  // Others may share a file that is only written, as a test runner's log is, and write meanwhile.
  const off_t place = (flags & O_ACCMODE) == O_WRONLY ? 0 : ::lseek(number, 0, SEEK_CUR);
  return joined(text, flags, place);
}

void addDescriptors(HostState& state) {
  const int limit = static_cast<int>(::sysconf(_SC_OPEN_MAX));
  for (int number = 0; number < limit; ++number) {
    if (::fcntl(number, F_GETFD) < 0) continue;
    state[kDescriptor + std::to_string(number)] = descriptorText(number);
  }
}

bool isKeptByTheLibrary(const std::string& name, const std::string& text) {
  if (!name.starts_with(kDescriptor)) return false;
  // libcurl has a pair of sockets for itself, which it leaves open to subprocesses.
  if (text.find(kPair) != std::string::npos) return true;
  if (text.find(" inherited") != std::string::npos) return false;
  const bool isStandard = std::stoi(name.substr(std::string(kDescriptor).size())) <= STDERR_FILENO;
  return !isStandard || text.find(" network") == std::string::npos;
}

}  // namespace

HostState stateOfThisProcess() {
  HostState state;
  addStatus(state);
  addSignals(state);
  addDescriptors(state);
  state["locale"] = std::setlocale(LC_ALL, nullptr);
  state["working directory"] = std::filesystem::current_path().string();
  for (char** variable = environ; *variable != nullptr; ++variable)
    state["environment"] += joined(*variable);
  itimerval timer{};
  ::getitimer(ITIMER_REAL, &timer);
  state["timer"] = joined(timer.it_value.tv_sec, timer.it_interval.tv_sec);
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  state["limit of descriptors"] = joined(limit.rlim_cur, limit.rlim_max);
  state["child"] = ::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD ? "none" : "left";
  return state;
}

std::string differences(const HostState& before, const HostState& after) {
  std::string lines;
  for (const auto& [name, text] : before) {
    const auto now = after.find(name);
    if (now == after.end()) {
      lines += name + ": gone, was " + text + "\n";
    } else if (now->second != text) {
      lines += name + ": " + text + " became " + now->second + "\n";
    }
  }
  for (const auto& [name, text] : after) {
    if (!before.contains(name) && !isKeptByTheLibrary(name, text)) {
      lines += name + ": new, " + text + "\n";
    }
  }
  return lines;
}

}  // namespace zt::test
