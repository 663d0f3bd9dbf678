// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "tests/support/Subprocess.h"
#include "tests/unit/platform/time/DateTextEnvironment.h"
#include "ztportal/platform/time/DateText.h"

// The machine's time zone changes while the process runs. Each test is a process with an /etc of
// its own.

namespace {

namespace fs = std::filesystem;
using zt::test::inForkedProcess;
using zt::test::kNotPermitted;
using zt::test::kWinterNoon;
using zt::test::timestamp;
using zt::test::UserIn;

constexpr const char* kLocaltime = "/etc/localtime";

constexpr const char* kInBerlin = "2026-11-21T13:00:00.000MEZ";
constexpr const char* kInNewYork = "2026-11-21T07:00:00.000GMT-5";

std::string timestampOfNoon() { return timestamp(kWinterNoon); }

fs::path zoneFile(const std::string& zone) { return "/usr/share/zoneinfo/" + zone; }

void linkTo(const std::string& zone) {
  fs::create_symlink(zoneFile(zone), "/etc/new");
  fs::rename("/etc/new", kLocaltime);
}

void copyOf(const std::string& zone) {
  fs::copy_file(zoneFile(zone), "/etc/new");
  fs::rename("/etc/new", kLocaltime);
}

/// Runs `body` in a process with an empty /etc and without `TZ`.
void expectOnAMachine(const std::function<void()>& body) {
  const int status = inForkedProcess([&body] {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("none", "/etc", "tmpfs", 0, nullptr) != 0) {
      return kNotPermitted;
    }
    const UserIn user(nullptr, "de_DE.UTF-8");
    body();
    return testing::Test::HasFailure() ? 1 : 0;
  });
  if (status == kNotPermitted) GTEST_SKIP() << "needs the right to mount";
  EXPECT_EQ(status, 0);
}

// A thread that had written a date kept its time zone for ever.
TEST(MachineZoneTest, AChangedOneShowsInTheNextText) {
  expectOnAMachine([] {
    linkTo("Europe/Berlin");
    EXPECT_EQ(timestampOfNoon(), kInBerlin);
    EXPECT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon)), "21.11.26, 13:00");
    linkTo("America/New_York");
    EXPECT_EQ(timestampOfNoon(), kInNewYork);
    EXPECT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon)), "21.11.26, 07:00");
    copyOf("Europe/Berlin");
    EXPECT_EQ(timestampOfNoon(), kInBerlin);
    copyOf("America/New_York");
    EXPECT_EQ(timestampOfNoon(), kInNewYork);
    EXPECT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon)), "21.11.26, 07:00");
    fs::remove(kLocaltime);
    EXPECT_EQ(timestampOfNoon(), "2026-11-21T12:00:00.000UTC");
    EXPECT_EQ(zt::shortDateAndTime(ZtDate::fromMilliseconds(kWinterNoon)), "21.11.26, 12:00");
    linkTo("Europe/Berlin");
    EXPECT_EQ(timestampOfNoon(), kInBerlin);
  });
}

TEST(MachineZoneTest, AChangedOneShowsBehindALinkThatStays) {
  expectOnAMachine([] {
    fs::create_symlink("/etc/zone", kLocaltime);
    for (const auto& [zone, hour] :
         {std::pair("Europe/Berlin", "13"), std::pair("America/New_York", "07")}) {
      fs::remove("/etc/zone");
      fs::create_symlink(zoneFile(zone), "/etc/zone");
      EXPECT_EQ(timestampOfNoon().substr(11, 2), hour);
    }
  });
}

TEST(MachineZoneTest, AChangedOneDoesNotShowInTheTextThatIsBeingWritten) {
  expectOnAMachine([] {
    linkTo("Europe/Berlin");
    {
      const zt::Timestamps text;
      linkTo("America/New_York");
      EXPECT_EQ(timestampOfNoon(), kInBerlin);
    }
    EXPECT_EQ(timestampOfNoon(), kInNewYork);
  });
}

TEST(MachineZoneTest, AnotherOneDoesNotMatterWhenTheProcessHasItsOwn) {
  expectOnAMachine([] {
    const UserIn user("Europe/Berlin", "de_DE.UTF-8");
    linkTo("UTC");
    EXPECT_EQ(timestampOfNoon(), kInBerlin);
    linkTo("America/New_York");
    EXPECT_EQ(timestampOfNoon(), kInBerlin);
  });
}

}  // namespace
