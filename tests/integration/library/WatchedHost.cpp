// SPDX-License-Identifier: Apache-2.0
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
#include <map>
#include <sstream>
#include <string>

#include "ztportal/ztportal.h"

// WatchedHost CONFIGURATION-URL CONDITION FILE: a host that uses the whole library under a
// condition, and writes to FILE what changed in its process, one change per line. Exit status: 0 if
// the report was accepted, 1 if it was not, 2 for wrong arguments.

namespace {

/// What a library could change in its process, by name: threads, signals, locale, working
/// directory, environment, file descriptors, subprocesses.
using HostState = std::map<std::string, std::string>;

constexpr const char* kDescriptor = "descriptor ";
constexpr const char* kPair = " pair";
/// A flag that the C library adds to every action, also to a restored one.
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
  // Other processes may write to a shared file, such as a test runner's log, in the meantime.
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
  // libcurl keeps a pair of sockets, which subprocesses inherit.
  if (text.find(kPair) != std::string::npos) return true;
  if (text.find(" inherited") != std::string::npos) return false;
  const bool isStandard = std::stoi(name.substr(std::string(kDescriptor).size())) <= STDERR_FILENO;
  return !isStandard || text.find(" network") == std::string::npos;
}

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
  state["limit of file descriptors"] = joined(limit.rlim_cur, limit.rlim_max);
  state["subprocess"] = ::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD ? "none" : "left";
  return state;
}

/// One line per difference. The file descriptors of the library's kept connection do not count,
/// unless other programs inherit them or a connection has the number of a standard stream.
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

bool apply(const std::string& condition) {
  if (condition == "plain") return true;
  if (condition == "closed streams") {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    return true;
  }
  if (condition == "UTF-8 locale") return std::setlocale(LC_ALL, "C.UTF-8") != nullptr;
  if (condition == "no user") return ::setgid(65534) == 0 && ::setuid(65534) == 0;
  if (condition == "many descriptors") {
    const rlimit limit{1024, 1024};
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    int last = 0;
    while (last < 1019) last = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    return true;
  }
  if (condition == "little memory") {
    // 64 MiB more than is mapped already.
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t size = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + (rlim_t{64} << 20U);
    const rlimit limit{size, size};
    return ::setrlimit(RLIMIT_AS, &limit) == 0;
  }
  if (condition == "own handlers") {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    for (const int number : {SIGPIPE, SIGCHLD, SIGALRM, SIGUSR1}) {
      ::sigaction(number, &action, nullptr);
    }
    return true;
  }
  return false;
}

bool report(const char* configurationUrl, const std::string& copy) {
  const auto document = ZtPortalData::initWithValues(
      configurationUrl, true, "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
  document->addPoolExecution(ZtDate::now())->addString("LOG", std::string(1'000'000, 'x'));
  document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
  const bool accepted = document->reportToServer();
  document->saveReport();
  document->reportToFile(copy);
  document->sendSavedReports();
  return accepted;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4 || !apply(arguments[2])) return 2;
  const std::string file = arguments[3];
  const HostState before = stateOfThisProcess();
  const bool accepted = report(arguments[1], file + ".report");
  const std::string changes = differences(before, stateOfThisProcess());
  // The condition may have left no file descriptor for the file. The library never releases the
  // memory of a connection that somebody else has closed.
  ZtHost::closeConnections();
  for (int number = 3; number < 1024; ++number) ::close(number);
  std::ofstream(file) << changes;
  return accepted ? 0 : 1;
}
