// Replaces the directory service's program of this name on systems without it, for the one query
// that the library uses. It reads the user database:
//
//     dscl . -read HOME PrimaryGroupID        prints "PrimaryGroupID: 1000"
//
// for the user whose home folder is HOME. If there are several, the user that runs this program
// takes precedence, then the first one in the database.

#include <pwd.h>
#include <unistd.h>

#include <iostream>
#include <optional>
#include <string_view>

#include "ztportal/base/Text.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;
/// As the directory service's own program: the low byte of 14136, eDSRecordNotFound.
constexpr int kNoRecord = 56;

bool livesIn(const passwd& user, std::string_view home) {
  return user.pw_dir != nullptr && zt::withoutTrailingSlashes(user.pw_dir) == home;
}

std::optional<gid_t> primaryGroupOf(std::string_view home) {
  // Looked up by number, since large directories do not list their users.
  const passwd* const self = ::getpwuid(::getuid());
  if (self != nullptr && livesIn(*self, home)) return self->pw_gid;

  std::optional<gid_t> group;
  ::setpwent();
  while (const passwd* const user = ::getpwent()) {
    if (!livesIn(*user, home)) continue;
    group = user->pw_gid;
    break;
  }
  ::endpwent();
  return group;
}

}  // namespace

int main(int count, char** words) {
  if (count != 5 || std::string_view(words[1]) != "." || std::string_view(words[2]) != "-read" ||
      std::string_view(words[4]) != "PrimaryGroupID") {
    std::cerr << "dscl: usage: dscl . -read HOME PrimaryGroupID\n";
    return kWrongUsage;
  }
  const std::optional<gid_t> group = primaryGroupOf(zt::withoutTrailingSlashes(words[3]));
  if (!group) {
    std::cerr << "dscl: " << words[3] << ": no user has this home folder\n";
    return kNoRecord;
  }
  std::cout << "PrimaryGroupID: " << *group << '\n' << std::flush;
  if (!std::cout) {
    std::cerr << "dscl: cannot write the answer\n";
    return kMachineFailed;
  }
  return 0;
}
