#include "tests/faults/FaultCases.h"

#include <cerrno>
#include <cstring>

namespace zt::torture {

namespace {

/// What can become of the calls of a kind.
struct CallKind {
  Call call;
  const char* name;
  bool ofFiles;
  bool movesBytes;
  int persistent;  ///< an error that can stay for good; 0: none
  std::vector<int> errors;
};

const std::array<CallKind, kCalls>& callKinds() {
  static const std::array<CallKind, kCalls> kKinds{{
      {Call::kOpen,
       "open",
       true,
       false,
       EMFILE,
       {EMFILE, ENFILE, EACCES, ENOSPC, EIO, ENOMEM, EROFS, EINTR}},
      {Call::kRead, "read", true, true, EIO, {EIO, EINTR, ENOMEM}},
      {Call::kWrite, "write", true, true, ENOSPC, {ENOSPC, EDQUOT, EIO, EFBIG, EINTR}},
      {Call::kClose, "close", true, false, EIO, {EIO, ENOSPC, EDQUOT, EINTR}},
      {Call::kMkdir, "mkdir", true, false, EROFS, {ENOSPC, EACCES, EROFS, EIO, EDQUOT, ENOMEM}},
      {Call::kRename, "rename", true, false, EROFS, {ENOSPC, EACCES, EROFS, EIO}},
      {Call::kUnlink, "unlink", true, false, EROFS, {EACCES, EROFS, EIO, EBUSY, ENOMEM}},
      {Call::kReaddir, "readdir", true, false, EIO, {EIO, ENOMEM, EBADF}},
      {Call::kSocket, "socket", false, false, EMFILE, {EMFILE, ENFILE, ENOBUFS, ENOMEM}},
      {Call::kConnect,
       "connect",
       false,
       false,
       ENETUNREACH,
       {ECONNREFUSED, ENETUNREACH, ETIMEDOUT, EADDRNOTAVAIL, EACCES, EINTR, EAGAIN}},
      {Call::kSend,
       "send",
       false,
       true,
       ECONNRESET,
       {ECONNRESET, EPIPE, ENOBUFS, ENOMEM, EINTR, EAGAIN}},
      {Call::kReceive,
       "recv",
       false,
       true,
       ECONNRESET,
       {ECONNRESET, ETIMEDOUT, ENOMEM, EINTR, EAGAIN}},
      {Call::kPoll, "poll", false, false, 0, {ENOMEM, EINTR, EINVAL}},
      {Call::kPipe, "pipe", false, false, EMFILE, {EMFILE, ENFILE, ENOMEM}},
      {Call::kStart, "start of a process", false, false, EAGAIN, {EAGAIN, ENOMEM}},
  }};
  return kKinds;
}

const CallKind& kindOf(Call call) { return callKinds().at(static_cast<std::size_t>(call)); }

std::string effectText(const FaultPlan& plan) {
  switch (plan.effect) {
    case Effect::kNone:
      return "nothing";
    case Effect::kFail:
      return std::string(std::strerror(plan.error)) + (plan.onwards ? ", and so on" : "");
    case Effect::kShort:
      return "half of the bytes";
    case Effect::kKillBefore:
      return "killed instead";
    case Effect::kKillMidway:
      return "killed midway";
    case Effect::kKillAfter:
      return "killed when it is done";
  }
  return "";
}

}  // namespace

const char* nameOf(Call call) { return kindOf(call).name; }

std::string FaultCase::text() const {
  std::string text(operation->name);
  text.append(": ").append(nameOf(plan.call)).append(" number ").append(std::to_string(plan.nth));
  return text.append(": ").append(effectText(plan));
}

std::vector<FaultCase> failingCases(const Operation& operation, const CallCounts& counts) {
  std::vector<FaultCase> cases;
  for (const CallKind& kind : callKinds()) {
    for (unsigned nth = 1; nth <= counts.at(static_cast<std::size_t>(kind.call)); ++nth) {
      for (const int error : kind.errors) {
        cases.push_back({&operation, {kind.call, nth, Effect::kFail, error, false}});
      }
      if (kind.persistent != 0) {
        cases.push_back({&operation, {kind.call, nth, Effect::kFail, kind.persistent, true}});
      }
      if (kind.movesBytes) {
        cases.push_back({&operation, {kind.call, nth, Effect::kShort, 0, false}});
      }
    }
  }
  return cases;
}

std::vector<FaultCase> killingCases(const Operation& operation, const CallCounts& counts) {
  std::vector<FaultCase> cases;
  for (const CallKind& kind : callKinds()) {
    if (!kind.ofFiles) continue;
    for (unsigned nth = 1; nth <= counts.at(static_cast<std::size_t>(kind.call)); ++nth) {
      for (const Effect effect : {Effect::kKillBefore, Effect::kKillMidway, Effect::kKillAfter}) {
        if (effect == Effect::kKillMidway && !kind.movesBytes) continue;
        cases.push_back({&operation, {kind.call, nth, effect, 0, false}});
      }
    }
  }
  return cases;
}

}  // namespace zt::torture
