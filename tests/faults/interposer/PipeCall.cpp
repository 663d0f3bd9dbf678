#include <unistd.h>

#include "tests/faults/interposer/Fate.h"

// Not part of sanitized builds: there it is the sanitizer that looks through pipes whether memory
// can be read, and a pipe that fails has it report what is not so. The library calls pipe2().

extern "C" int pipe(int* ends) noexcept {
  using zt::torture::Call;
  return zt::torture::meet<"pipe">(Call::kPipe, {}, -1, ends);
}
