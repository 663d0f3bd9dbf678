// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/platform/http/FakeNames.h"

#include <dlfcn.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <map>
#include <thread>

namespace zt::test {

namespace {

std::atomic<bool> isReplaced = false;
std::atomic<bool> isHeld = false;
std::atomic<int> begunCount = 0;
std::atomic<int> outstandingCount = 0;
std::atomic<int> mostCount = 0;
/// Changed only while no look-up is outstanding.
std::map<std::string, std::string>& addresses() {
  static auto* const all = new std::map<std::string, std::string>();
  return *all;
}

// Not by condition variables, which a forked process could not use.
void waitUntil(const auto& condition) {
  while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

/// The address of `name`, once look-ups may end.
std::string addressOf(const std::string& name) {
  const int outstanding = ++outstandingCount;
  int most = mostCount;
  while (outstanding > most && !mostCount.compare_exchange_weak(most, outstanding)) {
  }
  ++begunCount;
  waitUntil([] { return !isHeld; });
  const auto found = addresses().find(name);
  const std::string address = found == addresses().end() ? "" : found->second;
  --outstandingCount;
  return address;
}

}  // namespace

FakeNames::FakeNames(std::initializer_list<std::pair<const std::string, std::string>> all) {
  addresses() = all;
  begunCount = outstandingCount = mostCount = 0;
  isReplaced = true;
}

FakeNames::~FakeNames() {
  release();
  waitUntil([] { return outstandingCount == 0; });
  isReplaced = false;
}

void FakeNames::hold() { isHeld = true; }
void FakeNames::release() { isHeld = false; }
int FakeNames::begun() const { return begunCount; }
int FakeNames::outstanding() const { return outstandingCount; }
int FakeNames::mostOutstanding() const { return mostCount; }

}  // namespace zt::test

// The dynamic linker takes this one, of the program, before that of the C library.
extern "C" [[gnu::visibility("default")]] int getaddrinfo(const char* name, const char* service,
                                                          const addrinfo* hints,
                                                          addrinfo** result) {
  static const auto kOriginal =
      reinterpret_cast<decltype(&getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
  if (name == nullptr || !zt::test::isReplaced) {
    return kOriginal(name, service, hints, result);
  }
  const std::string address = zt::test::addressOf(name);
  return address.empty() ? EAI_NONAME : kOriginal(address.c_str(), service, hints, result);
}
