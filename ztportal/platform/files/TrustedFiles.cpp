// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/files/TrustedFiles.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>

namespace zt {

namespace {

/// Whether the group is the one that many systems make for each user: of the same name, and without
/// other members.
bool isPrivateGroup(gid_t number, uid_t user) {
  std::array<char, std::size_t{16} * 1024> texts;  // an entry that needs more is none
  passwd ownerEntry{};
  passwd* owner = nullptr;
  ::getpwuid_r(user, &ownerEntry, texts.data(), texts.size(), &owner);
  if (owner == nullptr || owner->pw_gid != number) return false;
  const std::string name = owner->pw_name;
  struct group groupEntry {};
  struct group* found = nullptr;
  ::getgrgid_r(number, &groupEntry, texts.data(), texts.size(), &found);
  if (found == nullptr || name != found->gr_name) return false;
  for (char** member = found->gr_mem; *member != nullptr; ++member) {
    if (name != *member) return false;
  }
  return true;
}

}  // namespace

bool isTrusted(const std::string& path, uid_t owner) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return false;
  const uid_t user = status.st_uid;
  if (user != 0 && user != ::geteuid() && user != owner) return false;
  if ((status.st_mode & S_IWOTH) != 0) return false;
  return (status.st_mode & S_IWGRP) == 0 || isPrivateGroup(status.st_gid, user);
}

uid_t ownerOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_uid : ::geteuid();
}

}  // namespace zt
