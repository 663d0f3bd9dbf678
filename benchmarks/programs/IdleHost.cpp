// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>
#include <ztportal/ztportal.h>

// The same as EmptyProgram.cpp, but linked with the library: a host that never reports.

int main(int count, char** /*words*/) {
  if (count > 2) return ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr) ? 0 : 1;
  if (count == 2 && ::write(STDOUT_FILENO, "\n", 1) == 1) ::pause();
  return 0;
}
