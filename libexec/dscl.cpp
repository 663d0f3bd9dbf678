// SPDX-License-Identifier: Apache-2.0
// Replaces the directory service's program of this name on systems without it, for the one query
// that the library uses. It reads the user database:
//
//     dscl . -read HOME PrimaryGroupID        prints "PrimaryGroupID: 1000"
//
// for the user whose home folder is HOME. If there are several, the user that runs this program
// takes precedence, then the first one in the database. For an administrator, which is root or a
// member of the groups that systems use for this, it prints 80: that is the number of the group
// "admin" where the directory service comes from, and what the library looks for.

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <string_view>
#include <vector>

#include "ztportal/base/Text.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;
/// As the directory service's own program: the low byte of 14136, eDSRecordNotFound.
constexpr int kNoRecord = 56;
constexpr gid_t kAdministrators = 80;

bool livesIn(const passwd& user, std::string_view home) {
  return user.pw_dir != nullptr && zt::withoutTrailingSlashes(user.pw_dir) == home;
}

/// The user whose home folder is `home`; valid until the next call. Null if there is none.
const passwd* userIn(std::string_view home) {
  // Looked up by number, since large directories do not list their users.
  const passwd* user = ::getpwuid(::getuid());
  if (user != nullptr && livesIn(*user, home)) return user;
  ::setpwent();
  do {
    user = ::getpwent();
  } while (user != nullptr && !livesIn(*user, home));
  ::endpwent();
  return user;
}

std::vector<gid_t> groupsOf(const passwd& user) {
  int count = 64;
  std::vector<gid_t> groups(static_cast<std::size_t>(count));
  while (::getgrouplist(user.pw_name, user.pw_gid, groups.data(), &count) < 0) {
    groups.resize(std::max(groups.size() * 2, static_cast<std::size_t>(count)));
    count = static_cast<int>(groups.size());
  }
  groups.resize(static_cast<std::size_t>(count));
  return groups;
}

bool isAdministrator(const passwd& user) {
  if (user.pw_uid == 0) return true;
  const std::vector<gid_t> groups = groupsOf(user);
  for (const char* name : {"sudo", "wheel", "admin"}) {
    const group* const found = ::getgrnam(name);
    if (found == nullptr) continue;
    if (std::find(groups.begin(), groups.end(), found->gr_gid) != groups.end()) return true;
  }
  return false;
}

}  // namespace

int main(int count, char** words) {
  if (count != 5 || std::string_view(words[1]) != "." || std::string_view(words[2]) != "-read" ||
      std::string_view(words[4]) != "PrimaryGroupID") {
    std::cerr << "dscl: usage: dscl . -read HOME PrimaryGroupID\n";
    return kWrongUsage;
  }
  const passwd* const user = userIn(zt::withoutTrailingSlashes(words[3]));
  if (user == nullptr) {
    std::cerr << "dscl: " << words[3] << ": no user has this home folder\n";
    return kNoRecord;
  }
  const gid_t group = isAdministrator(*user) ? kAdministrators : user->pw_gid;
  std::cout << "PrimaryGroupID: " << group << '\n' << std::flush;
  if (!std::cout) {
    std::cerr << "dscl: cannot write the answer\n";
    return kMachineFailed;
  }
  return 0;
}
