#include "tests/faults/OwnProcesses.h"

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>

namespace zt::torture {

namespace {

constexpr int kNoProcess = 3;

/// Who is no superuser is one in a user namespace of its own, if that is permitted.
bool unshareProcesses() {
  constexpr int kProcesses = CLONE_NEWPID | CLONE_NEWNS;
  const uid_t user = ::geteuid();
  const gid_t group = ::getegid();
  if (user == 0) return ::unshare(kProcesses) == 0;
  if (::unshare(kProcesses | CLONE_NEWUSER) != 0) return false;
  std::ofstream("/proc/self/setgroups") << "deny";
  std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
  std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
  return true;
}

void mountProcessTable() {
  if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return;
  ::mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr);
}

[[noreturn]] void waitAndEndLike(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
  }
  std::exit(WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status));
}

}  // namespace

void leaveOtherProcesses() {
  if (!unshareProcesses()) return;
  const pid_t process = ::fork();
  if (process < 0) std::exit(kNoProcess);
  if (process > 0) waitAndEndLike(process);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  // Without a table of its own it sees the others as before, which costs time alone.
  mountProcessTable();
}

}  // namespace zt::torture
