// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "ztportal/platform/identity/Gestalt.h"
#include "ztportal/platform/identity/MachineIdentity.h"

namespace zt::test {

/// Returns the numbers of a table; other selectors fail.
class FakeGestalt final : public Gestalt {
 public:
  std::optional<std::int32_t> ask(std::uint32_t selector) override {
    asked.push_back(selector);
    const auto found = answers.find(selector);
    return found != answers.end() ? std::optional(found->second) : std::nullopt;
  }

  std::map<std::uint32_t, std::int32_t> answers;
  std::vector<std::uint32_t> asked;
};

class FakeMachineIdentity final : public MachineIdentity {
 public:
  ZtString platformUUID() override { return uuid; }

  ZtString uuid = "564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5";
};

}  // namespace zt::test
