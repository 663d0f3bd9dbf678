#include "ztportal/platform/time/TimeEnvironment.h"

#include <unistd.h>

#include <cstddef>

namespace zt {
namespace {

/// The value of `entry` if it is that of the variable `name`, which ends in an equals sign;
/// otherwise null. Inlined with a literal it costs one comparison for nearly every entry.
template <std::size_t N>
const char* valueIfNamed(const char (&name)[N], const char* entry) {
  for (std::size_t i = 0; i < N - 1; ++i) {
    if (entry[i] != name[i]) return nullptr;
  }
  return entry + N - 1;
}

/// The first of several entries for one variable counts, as for getenv().
void keepFirst(const char*& kept, const char* value) {
  if (kept == nullptr) kept = value;
}

}  // namespace

TimeEnvironment timeEnvironment() {
  const char* zone = nullptr;
  const char* all = nullptr;
  const char* category = nullptr;
  const char* language = nullptr;
  // One walk through the environment: getenv() would need four, which takes longer than writing
  // the date.
  for (const char* const* next = environ; next != nullptr && *next != nullptr; ++next) {
    const char* const entry = *next;
    if (entry[0] == 'T') {
      keepFirst(zone, valueIfNamed("TZ=", entry));
    } else if (entry[0] == 'L' && entry[1] == 'A') {
      keepFirst(language, valueIfNamed("LANG=", entry));
    } else if (entry[0] == 'L' && entry[1] == 'C') {
      keepFirst(all, valueIfNamed("LC_ALL=", entry));
      keepFirst(category, valueIfNamed("LC_TIME=", entry));
    }
  }
  for (const char* const name : {all, category, language}) {
    if (name != nullptr && *name != '\0') return {zone, name};
  }
  return {zone, "C"};
}

}  // namespace zt
