#include "tools/ztreport/commands/Amounts.h"

#include <array>

namespace zt::tools {

namespace {

/// A unit, and the amount from which on the next one is used.
struct Unit {
  std::uintmax_t size;
  std::uintmax_t below;
  const char* name;
};

constexpr std::array<Unit, 4> kSpans{{
    {1, 60, " s"},
    {60, 60, " min"},
    {3'600, 48, " h"},
    {86'400, UINTMAX_MAX, " d"},
}};

constexpr std::array<Unit, 3> kSizes{{
    {1, 10'000, " bytes"},
    {1'024, 10'000, " KiB"},
    {1'048'576, UINTMAX_MAX, " MiB"},
}};

template <class Units>
std::string text(std::uintmax_t amount, const Units& units) {
  for (const Unit& unit : units) {
    if (amount / unit.size < unit.below) return std::to_string(amount / unit.size) + unit.name;
  }
  return std::to_string(amount);
}

}  // namespace

std::string ageText(std::chrono::seconds age) {
  if (age.count() < 0) return "in the future";
  return text(static_cast<std::uintmax_t>(age.count()), kSpans);
}

std::string sizeText(std::uintmax_t bytes) { return text(bytes, kSizes); }

}  // namespace zt::tools
