// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace zt {

/// The selector for a code of four characters, the first one in the highest byte.
constexpr std::uint32_t gestaltSelector(const char (&code)[5]) {
  std::uint32_t selector = 0;
  for (int i = 0; i < 4; ++i) selector = selector << 8U | static_cast<unsigned char>(code[i]);
  return selector;
}

inline constexpr std::uint32_t kGestaltSystemVersion = gestaltSelector("sysv");
inline constexpr std::uint32_t kGestaltSystemVersionMajor = gestaltSelector("sys1");
inline constexpr std::uint32_t kGestaltSystemVersionMinor = gestaltSelector("sys2");
inline constexpr std::uint32_t kGestaltSystemVersionBugFix = gestaltSelector("sys3");

/// Numbers that describe the operating system, by selector.
class Gestalt {
 public:
  virtual ~Gestalt() = default;

  /// The number for `selector`; nullopt if it is unknown.
  virtual std::optional<std::int32_t> ask(std::uint32_t selector) = 0;
};

}  // namespace zt
