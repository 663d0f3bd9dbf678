#include <unistd.h>
#include <ztportal/ztportal.h>

// The empty program as a host that could report, and never does.

int main(int count, char** /*words*/) {
  if (count > 2) return ZtReport::initWithCustomerAndGuid(REP_CUSTOMERID_ZT, nullptr) ? 0 : 1;
  if (count == 2 && ::write(STDOUT_FILENO, "\n", 1) == 1) ::pause();
  return 0;
}
