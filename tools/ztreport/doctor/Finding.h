#pragma once

#include <string>

namespace zt::tools {

enum class State { Ok, Warning, Failed };

/// What a check found: what is so, and what helps against it (nothing when it is well).
struct Finding {
  State state;
  std::string reason;
  std::string remedy;
};

inline Finding ok(std::string reason) { return {State::Ok, std::move(reason), ""}; }
inline Finding warning(std::string reason, std::string remedy) {
  return {State::Warning, std::move(reason), std::move(remedy)};
}
inline Finding failed(std::string reason, std::string remedy) {
  return {State::Failed, std::move(reason), std::move(remedy)};
}
/// The ground of the check is missing; another check has found that, and says what helps.
inline Finding skipped(const std::string& why) {
  return {State::Warning, "skipped: " + why, "mend what failed above"};
}

}  // namespace zt::tools
