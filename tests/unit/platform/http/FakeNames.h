// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

namespace zt::test {

/// Replaces the name look-ups of this process (getaddrinfo(3)) as long as it lives: the names have
/// the given addresses, and no other name exists.
///
///     FakeNames names{{"server.example", "127.0.0.1"}};
///     names.hold();                              // no look-up ends from now on
class FakeNames {
 public:
  FakeNames(std::initializer_list<std::pair<const std::string, std::string>> addresses);
  FakeNames(const FakeNames&) = delete;
  FakeNames& operator=(const FakeNames&) = delete;
  /// Waits for the end of all look-ups.
  ~FakeNames();

  void hold();
  void release();

  int begun() const;            ///< how many look-ups there were
  int outstanding() const;      ///< how many have not ended
  int mostOutstanding() const;  ///< how many there were at once
};

}  // namespace zt::test
