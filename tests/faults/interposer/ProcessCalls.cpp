#include <spawn.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "tests/faults/interposer/Fate.h"

// The calls that start processes, and those that make pairs of descriptors.

using zt::torture::Call;
using zt::torture::Effect;
using zt::torture::fateOf;
using zt::torture::killThisProcess;
using zt::torture::meet;
using zt::torture::original;

namespace {

/// posix_spawn() returns its error.
template <class Start>
int meetStart(const char* program, Start start) {
  const Effect effect = fateOf(Call::kStart, {program});
  if (effect == Effect::kFail) return errno;
  const int result = start();
  if (effect == Effect::kKillAfter || effect == Effect::kKillMidway) killThisProcess();
  return result;
}

}  // namespace

extern "C" {

int pipe2(int* ends, int flags) noexcept { return meet<"pipe2">(Call::kPipe, {}, -1, ends, flags); }

int socketpair(int domain, int type, int protocol, int* ends) noexcept {
  return meet<"socketpair">(Call::kPipe, {}, -1, domain, type, protocol, ends);
}

pid_t fork() noexcept { return meet<"fork">(Call::kStart, {}, pid_t{-1}); }

int posix_spawn(pid_t* process, const char* path, const posix_spawn_file_actions_t* actions,
                const posix_spawnattr_t* attributes, char* const* arguments,
                char* const* environment) {
  return meetStart(path, [&] {
    return original<"posix_spawn", int>(process, path, actions, attributes, arguments, environment);
  });
}

int posix_spawnp(pid_t* process, const char* program, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const* arguments,
                 char* const* environment) {
  return meetStart(program, [&] {
    return original<"posix_spawnp", int>(process, program, actions, attributes, arguments,
                                         environment);
  });
}

}  // extern "C"
