#include "tools/ztinbox/faults/FaultGenerator.h"

#include <array>

namespace zt::inbox {

namespace {

constexpr std::array<Answer, 6> kFaults{{
    {AnswerKind::kRefuse},
    {AnswerKind::kGarbage},
    {AnswerKind::kError, 500},
    {AnswerKind::kError, 503},
    {AnswerKind::kDrop},
    {AnswerKind::kTruncate},
}};

/// The upper 53 bits as a number from 0 to below 1.
double fraction(std::uint64_t number) { return static_cast<double>(number >> 11) * 0x1p-53; }

}  // namespace

std::optional<Answer> FaultGenerator::next(double rate) {
  const double chance = fraction(_numbers());
  const std::uint64_t choice = _numbers();
  if (chance >= rate) return std::nullopt;
  return kFaults[choice % kFaults.size()];
}

}  // namespace zt::inbox
