#pragma once

#include <cstdint>
#include <random>

namespace zt::torture {

/// Numbers that follow from a seed and a stream alone, the same everywhere: each report, case and
/// moment of a campaign has a stream of its own, so one can be repeated without the others.
class Random {
 public:
  Random(std::uint64_t seed, std::uint64_t stream) {
    constexpr unsigned kHalf = 32;
    std::seed_seq words{seed & 0xFFFFFFFFU, seed >> kHalf, stream & 0xFFFFFFFFU, stream >> kHalf};
    _numbers.seed(words);
  }

  /// 0 to `limit` - 1.
  std::uint64_t below(std::uint64_t limit) { return _numbers() % limit; }

 private:
  std::mt19937_64 _numbers;
};

}  // namespace zt::torture
