// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <dirent.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/Figure.h"
#include "benchmarks/LoopbackServer.h"
#include "benchmarks/Reports.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/SessionBus.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Free.h"
#include "ztportal/platform/desktop/LinuxRunningApplications.h"
#include "ztportal/portal/ZtReportStore.h"

// One delivery, one walk of the process table and the resending of a store, each compared with the
// same calls without the library.

namespace zt::bench {

namespace {

namespace fs = std::filesystem;

std::size_t takeBody(char* bytes, std::size_t /*one*/, std::size_t size, void* body) {
  static_cast<std::string*>(body)->append(bytes, size);
  return size;
}

/// Posts with libcurl over a kept connection.
class BarePost {
 public:
  BarePost() { curl_easy_setopt(_handle.get(), CURLOPT_WRITEFUNCTION, takeBody); }

  void post(const std::string& url, const std::string& body) {
    std::string response;
    curl_easy_setopt(_handle.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(_handle.get(), CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
    curl_easy_setopt(_handle.get(), CURLOPT_POSTFIELDS, body.data());
    curl_easy_setopt(_handle.get(), CURLOPT_WRITEDATA, &response);
    if (curl_easy_perform(_handle.get()) != CURLE_OK || response.empty()) {
      throw std::runtime_error("libcurl got no response");
    }
  }

 private:
  const std::unique_ptr<CURL, Free<curl_easy_cleanup>> _handle{curl_easy_init()};
};

/// Connects to the session bus, sends one signal with `text`, and disconnects.
void sendBareSignal(const std::string& text) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) throw std::runtime_error("no session bus");
  const std::unique_ptr<sd_bus, Free<sd_bus_flush_close_unref>> bus(opened);
  if (sd_bus_emit_signal(opened, "/com/kelvane/ZtPortal", "com.kelvane.ZtPortal",
                         "ZtPortalGhostNotification", "sa{ss}", "bench", 3, "version", "1", "date",
                         "21.11.26, 12:00", "request", text.c_str()) < 0) {
    throw std::runtime_error("the signal cannot be sent");
  }
}

/// The usual programs whose command line names the program that they run.
bool isInterpreter(std::string_view path) {
  const std::string_view name = path.substr(path.rfind('/') + 1);
  return name == "bash" || name == "dash" || name == "node" || name.starts_with("python");
}

/// Reads the process table and each process's link to its executable; of an interpreter also the
/// command line, and checks whether it runs in Flatpak and whether its first argument is a file.
/// Returns the number of processes.
std::size_t walkBareProcessTable() {
  std::size_t processes = 0;
  const std::unique_ptr<DIR, Free<closedir>> folder(opendir("/proc"));
  const int table = dirfd(folder.get());
  std::array<char, PATH_MAX> text;
  while (const dirent* entry = readdir(folder.get())) {
    if (entry->d_name[0] < '0' || entry->d_name[0] > '9') continue;
    ++processes;
    const std::string number = entry->d_name;
    ssize_t size = readlinkat(table, (number + "/exe").c_str(), text.data(), text.size());
    if (size < 0 || !isInterpreter({text.data(), static_cast<std::size_t>(size)})) continue;
    benchmark::DoNotOptimize(faccessat(table, (number + "/root/.flatpak-info").c_str(), F_OK, 0));
    const FileDescriptor file(openat(table, (number + "/cmdline").c_str(), O_RDONLY | O_CLOEXEC));
    size = read(file.number(), text.data(), text.size());
    if (size < 0) continue;
    const std::string line(text.data(), static_cast<std::size_t>(size));
    benchmark::DoNotOptimize(access(line.substr(line.find('\0') + 1).c_str(), F_OK));
  }
  return processes;
}

/// Parses `text` with libxml2 and writes the document back.
std::string parseAndWriteBare(const std::string& text) {
  const std::unique_ptr<xmlDoc, Free<xmlFreeDoc>> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET));
  if (document == nullptr) throw std::runtime_error("libxml2 cannot parse a saved report");
  xmlChar* written = nullptr;
  int size = 0;
  xmlDocDumpMemory(document.get(), &written, &size);
  const std::unique_ptr<xmlChar, Free<free>> bytes(written);
  return {reinterpret_cast<const char*>(written), static_cast<std::size_t>(size)};
}

/// A private session bus and a temporary data folder, in use for a scope.
class Desktop {
 public:
  const test::TemporaryFolder& dataFolder() const { return _data; }

 private:
  test::TemporaryFolder _data;
  test::SessionBus _bus;
  test::ScopedEnvironment _address{"DBUS_SESSION_BUS_ADDRESS", _bus.address().c_str()};
  test::ScopedEnvironment _dataHome{"XDG_DATA_HOME", _data.path().c_str()};
  test::ScopedEnvironment _proxy{"http_proxy", nullptr};
};

constexpr const char* kPeer = "same calls without the library";
constexpr std::size_t kBytes = 20'000;
constexpr int kLookUps = 3;

constexpr std::size_t kProcesses = 1000;

/// Starts sleeping processes until the whole machine has `kProcesses`.
class SleepingProcesses {
 public:
  SleepingProcesses() {
    for (std::size_t running = walkBareProcessTable(); running < kProcesses; ++running) {
      const pid_t process = ::fork();
      if (process < 0) throw std::runtime_error("no 1,000 processes");
      if (process == 0) sleepUntilKilled();
      _processes.push_back(process);
    }
  }
  SleepingProcesses(const SleepingProcesses&) = delete;
  SleepingProcesses& operator=(const SleepingProcesses&) = delete;
  ~SleepingProcesses() {
    for (const pid_t process : _processes) ::kill(process, SIGKILL);
    for (const pid_t process : _processes) ::waitpid(process, nullptr, 0);
  }

 private:
  [[noreturn]] static void sleepUntilKilled() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (;;) ::pause();
  }

  std::vector<pid_t> _processes;
};

constexpr std::size_t kReports = 10'000;
constexpr std::size_t kFewReports = 100;
constexpr double kMebibyte = 1024.0 * 1024.0;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

/// Saved reports, each with its own blocks on the disk, that can be put into the store repeatedly.
class SavedReports {
 public:
  SavedReports(const test::TemporaryFolder& folder, const std::string& text)
      : _folder(folder.path("saved")), _store(std::string(ZtPortalData::reportFolder().view())) {
    for (std::size_t i = 0; i < kReports; ++i) {
      folder.write("saved/{" + std::to_string(i) + "}.ztr", text);
    }
  }

  void fillStore(std::size_t count) const {
    for (const fs::directory_entry& file : fs::directory_iterator(_folder)) {
      if (count-- == 0) return;
      fs::create_hard_link(file.path(), _store / file.path().filename());
    }
  }
  void expectEmptyStore() const {
    if (!fs::is_empty(_store)) throw std::runtime_error("saved reports were not accepted");
  }
  const fs::path& store() const { return _store; }

 private:
  fs::path _folder;
  fs::path _store;
};

/// A line of /proc/self/status, in bytes.
double memory(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name)) return std::stod(line.substr(name.size())) * 1024.0;
  }
  throw std::runtime_error("no " + name + " in /proc/self/status");
}

/// Resets the peak of the resident memory to its current size.
void forgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

}  // namespace

/// One delivery of a report of 20 kB. It checks the test mode three times: for the text, for the
/// choice of the server, and for the post.
std::vector<Figure> deliveryFigures() {
  const LoopbackServer server;
  const Desktop desktop;
  setEnvironment();
  const auto report = reportOfSize(server.configurationUrl(), kBytes);
  const std::string text = report->getSoapString();
  const std::string url = server.reportUrl();
  BarePost post;
  const Work ours = [&] {
    if (!report->reportToServer()) throw std::runtime_error("a report was not accepted");
  };
  const Work theirs = [&] {
    for (int i = 0; i < kLookUps; ++i) walkBareProcessTable();
    sendBareSignal(text);
    post.post(url, text);
  };
  const std::vector<double> best = fastest(1500, {ours, theirs});
  return {atMostTimes(1.15, "one delivery of a 20 kB report", best[0] * 1e6, {kPeer, best[1] * 1e6},
                      "us")};
}

/// One walk of the process table of a machine with 1,000 processes.
std::vector<Figure> processWalkFigures() {
  const SleepingProcesses processes;
  LinuxRunningApplications applications;
  const std::vector<double> best =
      fastest(400, {[&] { benchmark::DoNotOptimize(applications.list()); },
                    [] { benchmark::DoNotOptimize(walkBareProcessTable()); }});
  return {atMostTimes(1.2, "a process table of 1,000 walked", best[0] * 1e6,
                      {"folder and links read", best[1] * 1e6}, "us")};
}

/// Resends a store of 10,000 reports of 20 kB, with a document and with a `ZtReportStore`. The
/// peers are the same calls without the library, and these calls with a check of the test mode
/// before each post.
std::vector<Figure> resendFigures() {
  const LoopbackServer server;
  const Desktop desktop;
  setEnvironment();
  const auto report = reportOfSize(server.configurationUrl(), kBytes);
  const SavedReports saved(desktop.dataFolder(), report->getSoapString());
  BarePost post;
  const auto resend = [&](std::size_t count) {
    saved.fillStore(count);
    const double seconds = secondsOf([&] { report->sendSavedReports(); });
    saved.expectEmptyStore();
    return seconds;
  };
  const auto resendBare = [&](bool withLookUps) {
    saved.fillStore(kReports);
    return secondsOf([&] {
      for (const fs::directory_entry& file : fs::directory_iterator(saved.store())) {
        if (withLookUps) walkBareProcessTable();
        const std::string text = parseAndWriteBare(contentOf(file.path()));
        sendBareSignal(text);
        post.post(server.reportUrl(), text);
        fs::remove(file.path());
      }
    });
  };

  resend(kFewReports);
  forgetPeak();
  const double before = memory("VmRSS:");
  const double ours = resend(kReports);
  const double growth = memory("VmHWM:") - before;
  saved.fillStore(kReports);
  ZtSendOptions options;
  options.configurationUrl = server.configurationUrl();
  const double stored = secondsOf([&] { ZtReportStore().send(options); });
  saved.expectEmptyStore();
  const double parts = resendBare(false);
  const double partsAndLookUps = resendBare(true);
  const auto each = [](double seconds) { return seconds * 1e6 / kReports; };
  return {
      atMostTimes(1.15, "resending 10,000 reports of 20 kB, each", each(ours), {kPeer, each(parts)},
                  "us"),
      atMostTimes(1.15, "resending 10,000 reports of 20 kB, each", each(ours),
                  {"with the look-ups of the test mode", each(partsAndLookUps)}, "us"),
      atMostTimes(1.15, "ZtReportStore::send of 10,000 reports, each", each(stored),
                  {kPeer, each(parts)}, "us"),
      atMost(2, "memory of resending 10,000 beyond 100", growth / kMebibyte, "MiB"),
  };
}

/// Handing over a report of 20 kB to the background sender while there is no server, compared with
/// saving it.
std::vector<Figure> backgroundFigures() {
  const Desktop desktop;
  setEnvironment();
  const auto report = reportOfSize("", kBytes);
  const fs::path file = std::string(report->reportFile());
  ZtBackgroundOptions options;
  options.configurationUrl = "http://127.0.0.1:1/";
  options.retryDelay = options.longestDelay = std::chrono::hours(1);
  ZtBackgroundSender sender(options);
  sender.send(*report);
  if (sender.flush(std::chrono::minutes(1)) != 1) throw std::runtime_error("there is a server");
  const Work ours = [&] {
    fs::remove(file);
    if (!sender.send(*report)) throw std::runtime_error("a report was not saved");
  };
  const Work theirs = [&] {
    fs::remove(file);
    report->saveReport();
  };
  const std::vector<double> best = fastest(1500, {ours, theirs});
  return {atMostTimes(1.3, "a 20 kB report handed over", best[0] * 1e6,
                      {"saving it", best[1] * 1e6}, "us")};
}

}  // namespace zt::bench
