// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <string>

namespace zt::test {

/// Changes the umask of the process for a scope.
class ScopedUmask {
 public:
  explicit ScopedUmask(mode_t mask) : _before(::umask(mask)) {}
  ScopedUmask(const ScopedUmask&) = delete;
  ScopedUmask& operator=(const ScopedUmask&) = delete;
  ~ScopedUmask() { ::umask(_before); }

 private:
  mode_t _before;
};

/// The permissions of the file at `path`; 0 if there is none.
inline mode_t modeOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return 0;
  return status.st_mode & 07777U;
}

}  // namespace zt::test
