// SPDX-License-Identifier: Apache-2.0
// The host program of script/faults: runs one operation of the library.
//
//     zt_fault_host OPERATION CONFIGURATION-URL JOURNAL SEED [--stop]
//
// OPERATION is send, save, resave, resend, background, store (which sends from two processes), or
// probe. With
// --stop the process stops itself (SIGSTOP) before the operation, so that strace can attach and
// count system calls from there.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <thread>

#include "ztportal/background/ZtBackgroundSender.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/ZtReportStore.h"
#include "ztportal/system/ZtHost.h"

namespace {

enum Outcome : std::int32_t { kBegun, kReady, kNotAccepted, kAccepted, kThrew, kNoDocument };

/// The host reports its results through a mapped file with this layout. This needs no system call
/// that could be made to fail, and survives a kill.
struct Journal {
  std::int32_t outcome;
  std::int32_t descriptors;  ///< how many more descriptors are open after the operation
  std::int32_t children;     ///< 1 if there are subprocesses left after the operation
  std::int32_t size;         ///< size of the text in bytes
  std::array<char, (std::size_t{8} << 20U) - 16> text;  ///< the request text, or the exception's

  void keep(std::string_view kept) {
    size = static_cast<std::int32_t>(std::min(kept.size(), text.size()));
    std::memcpy(text.data(), kept.data(), static_cast<std::size_t>(size));
  }
};

class Random {
 public:
  explicit Random(std::uint64_t seed) : _numbers(seed) {}
  /// 0 to `limit` - 1.
  std::uint64_t below(std::uint64_t limit) { return _numbers() % limit; }

 private:
  std::mt19937_64 _numbers;
};

constexpr std::array<const char*, 8> kTexts{"",
                                            "x",
                                            "gr\xc3\xbc\xc3\x9f",
                                            "\xf0\x9f\x9a\x80 up",
                                            "two  blanks",
                                            "\"quoted\" 'twice'",
                                            "\ttab",
                                            "line\nbreak"};

/// Most lengths are short; some exceed a network segment, a few the socket buffers.
std::string anyText(Random& random) {
  const std::uint64_t kind = random.below(400);
  std::string text = kTexts[random.below(kTexts.size())];
  if (kind == 0) text.append(random.below(1'000'000), 'h');
  if (kind < 20) text.append(random.below(20'000), 'l');
  return text;
}

/// Adds pools without arrays or markup, because reports with those cannot be sent from the store.
void fill(ZtPortalData& document, Random& random) {
  for (std::uint64_t pools = random.below(4) + 1; pools > 0; --pools) {
    if (random.below(2) == 0) {
      const auto pool = document.addPool("CUSTOM", ZtDate::now());
      for (std::uint64_t field = random.below(6); field > 0; --field) {
        pool->addString("VALUE" + std::to_string(field), anyText(random));
        pool->addInteger("NUMBER", static_cast<std::int32_t>(random.below(1'000'000)));
      }
    } else {
      const auto pool = document.addPoolExecution(ZtDate::now());
      pool->setEndResultString(anyText(random));
      for (std::uint64_t step = random.below(30); step > 0; --step) {
        pool->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter)
            ->setStepMessageString(anyText(random));
      }
    }
  }
}

std::shared_ptr<ZtPortalData> makeDocument(const char* url) {
  return ZtPortalData::initWithValues(url, false, "Kelvane",
                                      "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
}

/// Sends the store, one report after the other, as another process does at the same time.
void sendStore(const ZtPortalData& document) {
  constexpr int kMostTries = 50;
  const ZtReportStore store;
  ZtSendOptions options;
  options.configurationUrl = document.configurationUrl();
  options.progress = [](const ZtSavedReport&, const ZtDelivery&) { return false; };
  for (int tries = 0; tries < kMostTries && !store.list().empty(); ++tries) {
    const ZtSendEnd end = store.send(options).end;
    if (end == ZtSendEnd::Busy) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    if (end != ZtSendEnd::Busy && end != ZtSendEnd::Cancelled) return;
  }
}

void sendStoreFromTwoProcesses(const ZtPortalData& document) {
  const pid_t other = ::fork();
  sendStore(document);
  if (other == 0) ::_exit(0);
  while (other > 0 && ::waitpid(other, nullptr, 0) < 0 && errno == EINTR) continue;
}

/// Hands the document over to a background sender, notes that it is saved, and gives the sender a
/// while.
void sendInBackground(const char* url, ZtPortalData& document, Journal& journal) {
  ZtBackgroundOptions options;
  options.configurationUrl = url;
  options.attempts = 0;
  options.retryDelay = std::chrono::milliseconds(5);
  ZtBackgroundSender sender(options);
  if (!sender.send(document)) return;
  journal.outcome = kNotAccepted;
  sender.flush(std::chrono::seconds(1));
  sender.stop(std::chrono::seconds(10));
}

/// True for an accepted report.
bool act(std::string_view operation, ZtPortalData& document) {
  if (operation == "send") return document.reportToServer();
  if (operation == "resend") document.sendSavedReports();
  if (operation == "store") sendStoreFromTwoProcesses(document);
  if (operation == "save" || operation == "resave") document.saveReport();
  return false;
}

void run(std::string_view operation, const char* url, Random random, bool stops, Journal& journal) {
  std::shared_ptr<ZtPortalData> document;
  if (operation == "resave") {
    document = makeDocument(url);
    fill(*document, random);
    document->saveReport();
    journal.keep(document->getSoapString());
  }
  ::prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY);
  if (stops) ::raise(SIGSTOP);  // stops this thread immediately, and the others with it
  try {
    const bool isInBackground = operation == "background";
    if (!document) document = makeDocument(isInBackground ? "" : url);
    if (!document) {
      journal.outcome = kNoDocument;
      return;
    }
    if (operation == "send" || operation == "save" || isInBackground) fill(*document, random);
    if (operation == "probe") document->addPoolComputerSystemWithAutoCheck(ZtDate::now(), true);
    const std::string text = document->getSoapString();
    if (text.empty() && operation != "resend" && operation != "store") throw std::bad_alloc();
    journal.keep(text);
    journal.outcome = kReady;
    if (isInBackground) return sendInBackground(url, *document, journal);
    journal.outcome = act(operation, *document) ? kAccepted : kNotAccepted;
  } catch (const std::exception& error) {
    journal.keep(error.what());
    journal.outcome = kThrew;
  }
}

/// Counts descriptors with a system call that the C library does not use, so that it is not
/// mistaken for one of the library's.
std::int32_t openDescriptors() {
  constexpr int kMost = 64;
  std::int32_t count = 0;
  struct stat status {};
  for (int descriptor = 0; descriptor < kMost; ++descriptor) {
    if (::syscall(SYS_fstat, descriptor, &status) == 0) ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  const int file = ::open(argv[3], O_RDWR | O_CLOEXEC);
  void* const mapped =
      ::mmap(nullptr, sizeof(Journal), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  ::close(file);
  if (mapped == MAP_FAILED) return 2;
  auto& journal = *static_cast<Journal*>(mapped);
  ZtHost::setBundleInfo({{"CFBundleName", "Faults"}, {"CFBundleShortVersionString", "1.0"}});

  const std::int32_t before = openDescriptors();
  // The library closes its connections when the thread that used them ends.
  std::thread([&] {
    run(argv[1], argv[2], Random(std::stoull(argv[4])), argc > 5, journal);
  }).join();
  journal.descriptors = openDescriptors() - before;
  siginfo_t status{};
  journal.children = ::waitid(P_ALL, 0, &status, WEXITED | WNOHANG | WNOWAIT) == 0 ? 1 : 0;
  return 0;
}
