#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <fstream>
#include <string>

#include "tests/integration/library/HostState.h"
#include "ztportal/ztportal.h"

// WatchedHost CONFIGURATION-URL CONDITION FILE: a host that runs under a condition, does all that a
// host does with the library, and writes to FILE what that changed in its process, a line each.
// Ends with 0 when the report was accepted, 1 when it was not, 2 for wrong arguments.

namespace {

bool bring(const std::string& condition) {
  if (condition == "plain") return true;
  if (condition == "closed streams") {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::close(stream);
    return true;
  }
  if (condition == "UTF-8 locale") return std::setlocale(LC_ALL, "C.UTF-8") != nullptr;
  if (condition == "no user") return ::setgid(65534) == 0 && ::setuid(65534) == 0;
  if (condition == "many descriptors") {
    const rlimit limit{1024, 1024};
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) return false;
    int last = 0;
    while (last < 1019) last = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    return true;
  }
  if (condition == "little memory") {
    // What is mapped already, and 64 MiB more.
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t size = pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE)) + (rlim_t{64} << 20U);
    const rlimit limit{size, size};
    return ::setrlimit(RLIMIT_AS, &limit) == 0;
  }
  if (condition == "own handlers") {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    for (const int number : {SIGPIPE, SIGCHLD, SIGALRM, SIGUSR1}) {
      ::sigaction(number, &action, nullptr);
    }
    return true;
  }
  return false;
}

bool report(const char* configurationUrl, const std::string& copy) {
  const auto document = ZtPortalData::initWithValues(
      configurationUrl, true, "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
  document->addPoolExecution(ZtDate::now())->addString("LOG", std::string(1'000'000, 'x'));
  document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
  const bool accepted = document->reportToServer();
  document->saveReport();
  document->reportToFile(copy);
  document->sendSavedReports();
  return accepted;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4 || !bring(arguments[2])) return 2;
  const std::string file = arguments[3];
  const zt::test::HostState before = zt::test::stateOfThisProcess();
  const bool accepted = report(arguments[1], file + ".report");
  const std::string changes = zt::test::differences(before, zt::test::stateOfThisProcess());
  // The number of a standard stream would be the file's where those are closed.
  for (int number = 3; number < 1024; ++number) ::close(number);
  std::ofstream(file) << changes;
  return accepted ? 0 : 1;
}
