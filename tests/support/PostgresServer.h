// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::test {

/// A private PostgreSQL server, reached through a socket in its folder, which ends with its scope.
/// It keeps its databases when it is stopped and started again.
class PostgresServer {
 public:
  PostgresServer() {
    namespace fs = std::filesystem;
    for (const auto& version : fs::directory_iterator("/usr/lib/postgresql")) {
      _programs = version.path().string() + "/bin/";
    }
    // The server refuses to run as root.
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0) {
      _asUser = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
      if (::chown(_folder.path().c_str(), kNobody, kNobody) != 0) throw std::runtime_error("chown");
    }
    Subprocess creation(command("initdb", {"--auth=trust", "--username=test", "--encoding=UTF8",
                                           "--locale=C.UTF-8", "--no-sync"}));
    if (creation.wait() != 0) throw std::runtime_error("initdb: " + creation.waitForErrors());
    start();
  }
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;
  ~PostgresServer() { stop(SIGQUIT); }

  /// For libpq.
  std::string options() const { return "host=" + _folder.path() + " user=test dbname=postgres"; }

  void start() {
    // A server that was killed leaves this file; another process may have its number meanwhile.
    std::filesystem::remove(_folder.path("data/postmaster.pid"));
    _server.emplace(command("postgres", {"-c", "listen_addresses=", "-c", "fsync=off", "-c",
                                         "unix_socket_directories=" + _folder.path()}));
    for (int i = 0; i < 600; ++i) {
      if (Subprocess({_programs + "pg_isready", "-q", "-h", _folder.path()}).wait() == 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("postgres does not start");
  }
  /// SIGQUIT: at once, SIGINT: in order.
  void stop(int signal) {
    _server->signal(signal);
    _server->wait();
  }

 private:
  std::vector<std::string> command(const std::string& program,
                                   const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = _asUser;
    all.insert(all.end(), {_programs + program, "-D", _folder.path("data")});
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
  }

  TemporaryFolder _folder;
  std::string _programs;
  std::vector<std::string> _asUser;
  std::optional<Subprocess> _server;
};

}  // namespace zt::test
