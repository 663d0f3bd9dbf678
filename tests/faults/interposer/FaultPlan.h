#pragma once

#include <array>
#include <cstddef>

// What a process asks of the interposer that is preloaded into it. The functions are found with
// dlsym(RTLD_DEFAULT, ...), so that a program starts without the interposer, too.

namespace zt::torture {

/// Kinds of calls; each stands for all its forms (kOpen: open, openat, fopen, opendir, ...).
enum class Call : std::size_t {
  kOpen,
  kRead,
  kWrite,
  kClose,
  kMkdir,
  kRename,
  kUnlink,
  kReaddir,
  kSocket,
  kConnect,
  kSend,
  kReceive,
  kPoll,
  kPipe,
  kStart,  ///< fork, posix_spawn
};
inline constexpr std::size_t kCalls = 15;

enum class Effect {
  kNone,   ///< calls are counted alone
  kFail,   ///< the call has no effect but `error`; a close does close, as the system's own does
  kShort,  ///< a write, read, send or receive moves half of the bytes
  kKillBefore,  ///< the process is killed instead of the call
  kKillMidway,  ///< a write writes half and the process is killed; other calls: as kKillAfter
  kKillAfter,   ///< the process is killed when the call is done
};

struct FaultPlan {
  Call call = Call::kOpen;
  unsigned nth = 1;  ///< from 1, since the plan was armed
  Effect effect = Effect::kNone;
  int error = 0;         ///< errno of kFail
  bool onwards = false;  ///< each later call of this kind fails, too
};

struct FaultRecord {
  std::array<unsigned, kCalls> counts{};  ///< calls of each kind while armed
  bool struck = false;
  std::array<char, 512> place{};  ///< path of what the struck call was about, where it has one
};

}  // namespace zt::torture

extern "C" {
/// From now on the calls of this thread, and of no other, meet `plan`.
void zt_faults_arm(const zt::torture::FaultPlan* plan);
/// Ends that, and tells what happened meanwhile.
void zt_faults_disarm(zt::torture::FaultRecord* record);
}
