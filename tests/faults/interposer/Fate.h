#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "tests/faults/interposer/FaultPlan.h"

namespace zt::torture {

/// What a call is about: a path, which may start at the folder of a descriptor, a descriptor, or
/// neither.
struct Place {
  const char* path = nullptr;
  int descriptor = -1;
};

/// Counts a call and says what is to happen to it. Does not return when the process is to be
/// killed before the call; sets errno for a call that is to fail.
Effect fateOf(Call call, const Place& place);

[[noreturn]] void killThisProcess();

/// A name as a template argument.
template <std::size_t Size>
struct Name {
  std::array<char, Size> text{};
  // NOLINTNEXTLINE(google-explicit-constructor): written as a literal where it is used
  constexpr Name(const char (&literal)[Size]) { std::copy_n(literal, Size, text.begin()); }
};

/// Calls what the function `name` was before the interposer came.
template <Name name, class Result, class... Arguments>
Result original(Arguments... arguments) {
  static const auto function =
      reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name.text.data()));
  return function(arguments...);
}

/// The call `name` as its fate will have it; `failed` is what it returns when it fails.
template <Name name, class Result, class... Arguments>
Result meet(Call call, const Place& place, Result failed, Arguments... arguments) {
  const Effect effect = fateOf(call, place);
  if (effect == Effect::kFail) return failed;
  const Result result = original<name, Result, Arguments...>(arguments...);
  if (effect == Effect::kKillAfter || effect == Effect::kKillMidway) killThisProcess();
  return result;
}

/// The same for a call that moves `size` bytes, which `move` does for as many as it is given.
template <class Move>
auto meetTransfer(Call call, int descriptor, std::size_t size, Move move) -> decltype(move(size)) {
  const Effect effect = fateOf(call, {nullptr, descriptor});
  if (effect == Effect::kFail) return -1;
  const bool half = effect == Effect::kShort || effect == Effect::kKillMidway;
  const auto result = move(half && size > 1 ? size / 2 : size);
  if (effect == Effect::kKillAfter || effect == Effect::kKillMidway) killThisProcess();
  return result;
}

}  // namespace zt::torture
