#include "tests/faults/Preload.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

namespace zt::torture {

namespace {

template <class Function>
Function* interposed(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_DEFAULT, name));
}

}  // namespace

void ensureInterposer(char** words) {
  if (interposed<void(const FaultPlan*)>("zt_faults_arm") != nullptr) {
    ::unsetenv("LD_PRELOAD");
    ::unsetenv("GLIBC_TUNABLES");
    return;
  }
  ::setenv("LD_PRELOAD", ZT_FAULTS_LIBRARY, 1);
  // A thread's own list of free blocks would count as memory in use.
  ::setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
  ::execv("/proc/self/exe", words);
  throw std::runtime_error("cannot start anew with the interposer");
}

Armed::Armed(const FaultPlan& plan) {
  static const auto arm = interposed<void(const FaultPlan*)>("zt_faults_arm");
  if (arm == nullptr) throw std::runtime_error("the interposer is not loaded");
  arm(&plan);
}

Armed::~Armed() {
  if (_isArmed) disarm();
}

FaultRecord Armed::disarm() {
  static const auto disarm = interposed<void(FaultRecord*)>("zt_faults_disarm");
  FaultRecord record;
  disarm(&record);
  _isArmed = false;
  return record;
}

}  // namespace zt::torture
