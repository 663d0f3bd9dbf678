#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "benchmarks/ExecutionPoolPeers.h"
#include "benchmarks/TypicalReport.h"
#include "benchmarks/figures/BareParts.h"
#include "benchmarks/figures/Desktop.h"
#include "benchmarks/figures/Fastest.h"
#include "benchmarks/figures/Figure.h"
#include "benchmarks/figures/LoopbackServer.h"

// A store of 10,000 saved reports of 20 kB, sent again: beside its parts, and beside its parts with
// the look-up of the test mode that goes before each post.

namespace zt::bench {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kReports = 10'000;
constexpr std::size_t kFewReports = 100;
constexpr std::size_t kBytes = 20'000;
constexpr double kMebibyte = 1024.0 * 1024.0;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

/// Saved reports, each of its own bytes on the disk, to be put into the store again and again.
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

void forgetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

}  // namespace

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
  const auto resendBarely = [&](bool withLookUps) {
    saved.fillStore(kReports);
    return secondsOf([&] {
      for (const fs::directory_entry& file : fs::directory_iterator(saved.store())) {
        if (withLookUps) walkBareProcessTable();
        const std::string text = parseAndWriteBarely(contentOf(file.path()));
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
  const double parts = resendBarely(false);
  const double partsAndLookUps = resendBarely(true);
  const auto each = [](double seconds) { return seconds * 1e6 / kReports; };
  return {
      atMostTimes(1.15, "resending 10,000 reports of 20 kB, each", each(ours),
                  {"its parts barely", each(parts)}, "us"),
      atMostTimes(1.15, "resending 10,000 reports of 20 kB, each", each(ours),
                  {"with the look-ups", each(partsAndLookUps)}, "us"),
      atMost(2, "memory of resending 10,000 beyond 100", growth / kMebibyte, "MiB"),
  };
}

}  // namespace zt::bench
