#include <unistd.h>

// A program that does nothing; with an argument it waits until it is killed, to be measured.

int main(int count, char** /*words*/) {
  if (count == 2 && ::write(STDOUT_FILENO, "\n", 1) == 1) ::pause();
  return 0;
}
