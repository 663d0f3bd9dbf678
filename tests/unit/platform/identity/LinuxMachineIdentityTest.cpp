// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

#include "tests/support/Subprocess.h"
#include "ztportal/platform/identity/LinuxMachineIdentity.h"
#include "ztportal/platform/identity/MachineIdentity.h"

namespace {

using testing::MatchesRegex;
using zt::LinuxMachineIdentity;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::Subprocess;

bool isUuid(const ZtString& text) {
  return testing::Value(
      std::string(text.printed()),
      MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST(RandomUuidTest, IsAUuidOfVersion4InUpperCase) {
  for (int i = 0; i < 100; ++i) {
    const ZtString uuid = zt::randomUuid();
    EXPECT_TRUE(isUuid(uuid)) << uuid.view();
  }
}

TEST(RandomUuidTest, IsDifferentEachTime) {
  std::set<ZtString> seen;
  for (int i = 0; i < 1000; ++i) seen.insert(zt::randomUuid());
  EXPECT_EQ(seen.size(), 1000U);
}

/// From now on getrandom(2) fails in this process, as in a sandbox or with an old kernel.
bool forbidGetrandom() {
  struct sock_filter instructions[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getrandom, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const struct sock_fprog program { std::size(instructions), instructions };
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

// Regression: without getrandom(2) every report had the ID "{(null)}", so that in the store each
// replaced the one before.
TEST(RandomUuidTest, NeedsNoGetrandom) {
  const int failed = inForkedProcess([] {
    if (!forbidGetrandom()) return kNotPermitted;
    const ZtString first = zt::randomUuid();
    return isUuid(first) && zt::randomUuid() != first ? 0 : 1;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "a filter of system calls is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST(RandomUuidTest, NeedsNoDevicesEither) {
  const int failed = inForkedProcess([] {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", "/dev", "tmpfs", 0, nullptr) != 0 || !forbidGetrandom()) {
      return kNotPermitted;
    }
    std::ofstream("/dev/urandom") << "not a device, always the same";
    const ZtString first = zt::randomUuid();
    return isUuid(first) && zt::randomUuid() != first ? 0 : 1;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "mounting is not permitted";
  EXPECT_EQ(failed, 0);
}

TEST(UuidTextTest, WritesTheBytesInTheirOrder) {
  using Bytes = std::array<std::uint8_t, 16>;
  EXPECT_EQ(zt::uuidText(Bytes{0x0f, 0x1d, 0x6a, 0x52, 0x93, 0xe5, 0x4e, 0x0b, 0x8d, 0x57, 0x5a,
                               0x2c, 0x7d, 0x3b, 0x9e, 0x11}),
            "0F1D6A52-93E5-4E0B-8D57-5A2C7D3B9E11");
  EXPECT_EQ(zt::uuidText(Bytes{}), "00000000-0000-0000-0000-000000000000");
}

std::string lowerWithoutHyphens(std::string text) {
  std::erase(text, '-');
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return text;
}

class LinuxMachineIdentityTest : public testing::Test {
 protected:
  LinuxMachineIdentityTest() { std::ifstream("/etc/machine-id") >> _raw; }
  void SetUp() override {
    if (_raw.size() != 32) GTEST_SKIP() << "this machine has no ID";
  }

  std::string _raw;
};

TEST_F(LinuxMachineIdentityTest, IsAUuidInUpperCase) {
  EXPECT_THAT(std::string(LinuxMachineIdentity().platformUUID().view()),
              MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
}

TEST_F(LinuxMachineIdentityTest, IsTheSameForEveryCallAndUser) {
  const ZtString uuid = LinuxMachineIdentity().platformUUID();
  EXPECT_EQ(LinuxMachineIdentity().platformUUID(), uuid);
  const int failed = inForkedProcess([&] {
    constexpr uid_t kNobody = 65534;
    if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0) return kNotPermitted;
    return LinuxMachineIdentity().platformUUID() == uuid ? 0 : 1;
  });
  if (failed == kNotPermitted) GTEST_SKIP() << "another user cannot be taken";
  EXPECT_EQ(failed, 0);
}

TEST_F(LinuxMachineIdentityTest, DoesNotRevealTheMachineId) {
  const ZtString uuid = LinuxMachineIdentity().platformUUID();
  EXPECT_NE(lowerWithoutHyphens(std::string(uuid.view())), lowerWithoutHyphens(_raw));
}

TEST_F(LinuxMachineIdentityTest, IsWhatSystemdDerivesForTheLibrary) {
  const std::string option = std::string("--app-specific=") + LinuxMachineIdentity::kApplicationId;
  try {
    Subprocess tool({"systemd-id128", "machine-id", option});
    EXPECT_EQ(tool.readLine(std::chrono::seconds(10)),
              lowerWithoutHyphens(std::string(LinuxMachineIdentity().platformUUID().view())));
  } catch (const std::system_error& error) {
    GTEST_SKIP() << error.what();
  }
}

}  // namespace
