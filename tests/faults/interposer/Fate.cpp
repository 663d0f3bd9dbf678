#include "tests/faults/interposer/Fate.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace zt::torture {

namespace {

// One thread of a process is armed at a time, the only one to touch the plan and the record.
thread_local bool armed = false;
FaultPlan plan;
FaultRecord record;

void notePlace(const Place& place) {
  // What does not fit is cut off; a place without a name stays empty.
  record.place = {};
  std::size_t used = 0;
  const bool isWhole = place.path != nullptr && place.path[0] == '/';
  if (!isWhole && place.descriptor >= 0) {
    std::array<char, 64> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", place.descriptor);
    const ssize_t length = ::readlink(link.data(), record.place.data(), record.place.size() - 2);
    used = length > 0 ? static_cast<std::size_t>(length) : 0;
    if (used > 0 && place.path != nullptr) record.place[used++] = '/';
  }
  if (place.path != nullptr) {
    std::strncpy(record.place.data() + used, place.path, record.place.size() - used - 1);
  }
}

}  // namespace

Effect fateOf(Call call, const Place& place) {
  if (!armed) return Effect::kNone;
  const unsigned count = ++record.counts[static_cast<std::size_t>(call)];
  if (plan.effect == Effect::kNone || call != plan.call) return Effect::kNone;
  if (count != plan.nth && !(plan.onwards && count > plan.nth)) return Effect::kNone;
  if (!record.struck) notePlace(place);
  record.struck = true;
  if (plan.effect == Effect::kKillBefore) killThisProcess();
  if (plan.effect == Effect::kFail) errno = plan.error;
  return plan.effect;
}

void killThisProcess() {
  ::kill(::getpid(), SIGKILL);
  for (;;) ::pause();
}

}  // namespace zt::torture

void zt_faults_arm(const zt::torture::FaultPlan* plan) {
  zt::torture::plan = *plan;
  zt::torture::record = {};
  zt::torture::armed = true;
}

void zt_faults_disarm(zt::torture::FaultRecord* record) {
  zt::torture::armed = false;
  *record = zt::torture::record;
}
