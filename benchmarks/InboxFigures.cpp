// SPDX-License-Identifier: Apache-2.0
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/Figure.h"
#include "tests/support/LoopbackClient.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// Reports of 20 kB from 8 connections, stored in the inbox's database, compared with the same
// server without a store.

namespace zt::bench {

namespace {

constexpr int kRounds = 3;
constexpr std::chrono::seconds kPatience{60};

/// The number after `before` in `text`.
double numberBehind(std::string_view text, std::string_view before) {
  const std::size_t at = text.find(before);
  if (at == std::string_view::npos) throw std::runtime_error("no number: " + std::string(text));
  return std::stod(std::string(text.substr(at + before.size())));
}

class Server {
 public:
  explicit Server(const std::string& program)
      : _process(
            {program, "--listen", "127.0.0.1:0", "--data", _folder.path(), "--max", "1000000"}) {
    const std::string line = _process.readLine(kPatience).value_or(program + " does not start");
    _port = static_cast<int>(numberBehind(line, "127.0.0.1:"));
  }

  /// Reports per second that the server accepts from 8 connections, measured for two seconds.
  double rate() {
    test::Subprocess load({ZT_INBOX_LOAD, std::to_string(_port), "8", "2", "20000"});
    const std::string line = load.readLine(kPatience).value_or("");
    _answered += static_cast<std::uint64_t>(numberBehind(line, ""));
    return numberBehind(line, " s: ");
  }

  /// Stops the server, including background work such as its index, until goOn().
  void pause() const { _process.signal(SIGSTOP); }
  void goOn() const { _process.signal(SIGCONT); }

  /// Whether every answered report is stored.
  bool hasKeptAll() const {
    const auto stats = test::HttpClient(_port).get("/api/v1/stats");
    return stats && numberBehind(stats->body, "\"reports\":") == static_cast<double>(_answered);
  }

 private:
  test::TemporaryFolder _folder;
  test::Subprocess _process;
  int _port = 0;
  std::uint64_t _answered = 0;
};

}  // namespace

std::vector<Figure> inboxFigures() {
  Server keeping(ZT_INBOX);
  Server answering(ZT_INBOX_ANSWERING);
  double kept = 0;
  double answered = 0;
  for (int round = 0; round < kRounds; ++round) {
    kept = std::max(kept, keeping.rate());
    keeping.pause();
    answered = std::max(answered, answering.rate());
    keeping.goOn();
  }
  if (!keeping.hasKeptAll()) throw std::runtime_error("the inbox lost reports");
  return {atLeastTimes(0.5, "ztinbox from 8 connections, nothing lost", kept,
                       {"without storing", answered}, "a second")};
}

}  // namespace zt::bench
