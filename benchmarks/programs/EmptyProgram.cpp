// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

// A program that does nothing. With an argument it waits to be killed, so that its memory can be
// measured.

int main(int count, char** /*words*/) {
  if (count == 2 && ::write(STDOUT_FILENO, "\n", 1) == 1) ::pause();
  return 0;
}
