#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "tests/faults/Budget.h"

namespace zt::torture {

/// What was counted, by name; shares add up.
using Figures = std::map<std::string, std::uint64_t>;

/// Does `work` for the shares 0 to `jobs` - 1, each in a process of its own, and adds up what they
/// counted. The first Failure of one stops the others and is thrown here.
Figures inShares(unsigned jobs, Budget& budget, const std::function<Figures(unsigned)>& work);

}  // namespace zt::torture
