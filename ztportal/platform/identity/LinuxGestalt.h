#pragma once

#include <string>

#include "ztportal/platform/identity/Gestalt.h"

namespace zt {

/// Version numbers of the distribution from os-release(5), refined where the distribution tells
/// more elsewhere (`debian_version`, `redhat-release`, `centos-release`):
///
///     VERSION_ID="12", debian_version "12.11"                          12, 11, 0
///     VERSION_ID="22.04"                                               22, 4, 0
///     VERSION_ID="7", "CentOS Linux release 7.9.2009 (Core)"           7, 9, 2009
///
/// `kGestaltSystemVersionMajor`, `-Minor` and `-BugFix` give the three. `kGestaltSystemVersion` is
/// the packed form of old, four bits a decimal digit: two digits major, one minor, one bug-fix,
/// each stopping at its largest ("22.04" is 0x2240, 12.11 is 0x1290). It is 0x1040 at least, the
/// number from which on the three separate selectors exist. Deliberately: callers that ask it
/// first then always take the separate numbers, which have room for more digits.
///
/// Other selectors fail, and all of them on a system whose release file has no version (a rolling
/// distribution) or one too large for 32 bits. Reads the files at each call; without state.
class LinuxGestalt final : public Gestalt {
 public:
  /// `root` is the folder that the system's files stand in.
  explicit LinuxGestalt(std::string root = "/");

  std::optional<std::int32_t> ask(std::uint32_t selector) override;

 private:
  std::string _root;
};

}  // namespace zt
