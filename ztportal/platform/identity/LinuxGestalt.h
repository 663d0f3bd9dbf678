// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "ztportal/platform/identity/Gestalt.h"

namespace zt {

/// Version numbers of the distribution from os-release(5), refined where another file of the
/// distribution (`debian_version`, `redhat-release`, `centos-release`) or the version for people
/// has more of them:
///
///     VERSION_ID="12", debian_version "12.11"                          12, 11, 0
///     VERSION_ID="22.04", VERSION="22.04.3 LTS (Jammy Jellyfish)"      22, 4, 3
///     VERSION_ID="7", "CentOS Linux release 7.9.2009 (Core)"           7, 9, 2009
///
/// `kGestaltSystemVersionMajor`, `-Minor` and `-BugFix` return the three. `kGestaltSystemVersion`
/// is the old packed form, four bits a decimal digit: two digits major, one minor, one bug-fix,
/// each limited to its largest value ("22.04" is 0x2240, 12.11 is 0x1290). It is at least 0x1040,
/// the first version with the three separate selectors. This is deliberate: callers that look at it
/// first then always use the separate numbers, which can have more digits.
///
/// Other selectors fail; so do all of them if the release file has no version (a rolling
/// distribution) or one too large for 32 bits. Reads the files at each call; without state.
class LinuxGestalt final : public Gestalt {
 public:
  /// `root` is the root folder of the system's files.
  explicit LinuxGestalt(std::string root = "/");

  std::optional<std::int32_t> ask(std::uint32_t selector) override;

 private:
  std::string _root;
};

}  // namespace zt
